// The package by `import`, and what stands in it.
import assert from "node:assert/strict";
import fs from "node:fs";
import { test } from "node:test";
import all, { Module, Screen } from "orvanel42";

test("import gives the same as require", async () => {
    assert.equal(all.Module, Module);
    const module = await Module.start();
    assert.ok(module.screen() instanceof Screen);
    await module.close();
});

test("the package has types, no script and no dependency", () => {
    const folder = new URL("./node_modules/orvanel42/", import.meta.url);
    const about = JSON.parse(fs.readFileSync(new URL("package.json", folder), "utf8"));
    assert.deepEqual([about.scripts, about.dependencies], [undefined, undefined]);
    const types = fs.readFileSync(new URL(about.types, folder), "utf8");
    const methods = Object.getOwnPropertyNames(Module.prototype).filter((name) => name !== "constructor");
    assert.deepEqual(methods.filter((name) => !new RegExp(`\\b${name}[(:]`).test(types)), []);
});
