// The kit compiler as WebAssembly against the native one, and the page's way to it:
//   node --test, with ORVANEL42_KIT (the native program) and ORVANEL42_KIT_WASM.
"use strict";

const assert = require("node:assert/strict");
const { spawnSync } = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { test, before, after } = require("node:test");

const source = path.join(__dirname, "../../..");
const Kit = require(path.join(source, "web/kit.js"));
const native = process.env.ORVANEL42_KIT;
let program, scratch;

before(async () => {
    program = await WebAssembly.compile(fs.readFileSync(process.env.ORVANEL42_KIT_WASM));
    scratch = fs.mkdtempSync(path.join(os.tmpdir(), "kit-"));
});
after(() => fs.rmSync(scratch, { recursive: true, force: true }));

function files_below(folder) {
    const files = new Map();
    const add = (name) => {
        const whole = path.join(folder, name);
        if (fs.statSync(whole).isDirectory()) fs.readdirSync(whole).sort().forEach((inner) => add(path.join(name, inner)));
        else files.set(name, fs.readFileSync(whole));
    };
    fs.readdirSync(folder).sort().forEach((name) => add(name));
    return files;
}

// What a kit may name of this system.
function with_fonts(files) {
    const fonts = "/usr/share/fonts/truetype/dejavu";
    for (const font of fs.readdirSync(fonts)) files.set("system/" + font, fs.readFileSync(path.join(fonts, font)));
    return files;
}

const text_of = (bytes) => (bytes === null ? null : Buffer.from(bytes).toString("hex"));

// Both compilers on the same files: what they say, give and return.
async function same(name, files, what = name) {
    const folder = fs.mkdtempSync(path.join(scratch, "c"));
    for (const [file, content] of files) {
        fs.mkdirSync(path.dirname(path.join(folder, file)), { recursive: true });
        fs.writeFileSync(path.join(folder, file), content);
    }
    const out = path.join(folder, ":out");
    const { status, stderr } = spawnSync(native, ["build", name, "-q", "-o", out + ".bin", "-o", out + ".eep"],
        { cwd: folder, encoding: "utf8" });
    const content = (file) => (status === 0 ? fs.readFileSync(file).toString("hex") : null);
    const expected = {
        status, messages: stderr.split("\n").filter((line) => line !== ""),
        image: content(out + ".bin"), stream: content(out + ".eep"),
    };
    fs.rmSync(folder, { recursive: true });
    const built = await Kit.build(program, with_fonts(new Map(files)), name);
    const actual = {
        status: built.status, messages: built.messages.filter((line) => !line.includes(": hint: here is no folder")),
        image: text_of(built.image), stream: text_of(built.stream),
    };
    assert.deepEqual(actual, expected, what);
    return built;
}

test("the kits that come along give the native image and stream", async () => {
    const files = new Map();
    for (const folder of ["examples", "data/demo", "tests/scenarios"])
        for (const [name, content] of files_below(path.join(source, folder))) files.set(`${folder}/${name}`, content);
    for (const kit of ["examples/device.kit", "examples/panel.kit", "data/demo/demo.kit", "tests/scenarios/reading.kit"]) {
        const built = await same(kit, files);
        assert.equal(built.status, 0, built.messages.join("\n"));
        assert.match(built.summary, /CRC/);
    }
});

test("kits in which something is wrong are refused in the same words", async () => {
    const kits = [
        "[normal macro 0]\n#GX\n[font 0]\n", "", "#ZF1,", "[picture 1]\nfile = none.png\n", "[font 1]\nfile = ../../a.ttf\n",
        "[font 1]\nfile = /etc/nothing.ttf\n", "include self.kit\n", "\0\xff\x1b[31m", "[normal macro 0]\n".repeat(40),
        "[picture 1]\nfile = .\n", "[image]\nlength = 99999999999\n", "[normal macro 1]\ntext \"" + "x".repeat(70000) + "\"\n",
    ];
    for (const kit of kits)
        await same("self.kit", new Map([["self.kit", Buffer.from(kit, "latin1")]]), JSON.stringify(kit.slice(0, 60)));
    await same("none.kit", new Map());
});

// What the fuzzer of the kits has kept: 300 of them, evenly.
test("the fuzzer's kits have the same end", async () => {
    const unpacked = path.join(scratch, "corpus");
    fs.mkdirSync(unpacked);
    const archive = path.join(source, "tests/fuzz/corpus/kit.tar.xz");
    assert.equal(spawnSync("tar", ["-xJf", archive, "-C", unpacked]).status, 0);
    const kits = [...files_below(unpacked)];
    const step = Math.ceil(kits.length / 300);
    for (let i = 0; i < kits.length; i += step) await same("page.kit", new Map([["page.kit", kits[i][1]]]), kits[i][0]);
});

// setjmp and exceptions are of our own there: each damage has to end in words.
test("damaged pictures and fonts are refused in the same words", async () => {
    const font = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf";
    const pictures = path.join(source, "examples/device");
    const picture = fs.readdirSync(pictures).find((name) => name.endsWith(".png"));
    const whole = {
        "a.png": fs.readFileSync(picture ? path.join(pictures, picture) : path.join(source, "examples/panel.png")),
        "a.ttf": fs.readFileSync(font),
    };
    const kit_of = {
        "a.png": "[picture 1]\nfile = a.png\n",
        "a.ttf": "[font 1]\nfile = a.ttf\nsize = 12\ncharacters = 32-126\n",
    };
    for (const name of Object.keys(whole)) {
        const damaged = [whole[name], Buffer.alloc(0)];
        for (let part = 1; part < 8; ++part) {
            const length = whole[name].length;
            damaged.push(whole[name].subarray(0, Math.floor((length * part) / 8)));
            const flipped = Buffer.from(whole[name]);
            flipped[Math.floor((length * part) / 8)] ^= 0x55;
            damaged.push(flipped);
        }
        for (const at of [0, 8, 12, 17, 20, 24, 25, 26, 28, 33, 40]) {
            const flipped = Buffer.from(whole[name]);
            flipped[at] ^= 0xff;
            damaged.push(flipped);
        }
        for (const [number, content] of damaged.entries())
            await same("page.kit", new Map([["page.kit", Buffer.from(kit_of[name])], [name, content]]), `${name} ${number}`);
    }
});

test("a kit is found nearest to the top, and a font of the system among the files", async () => {
    const bytes = Buffer.from("#DL");
    assert.equal(Kit.find(new Map([["a/b/x.kit", bytes], ["a/y.KIT", bytes], ["z.png", bytes]])), "a/y.KIT");
    assert.throws(() => Kit.find(new Map([["b.kit", bytes], ["a.kit", bytes]])), /several kits: a\.kit, b\.kit/);
    assert.throws(() => Kit.find(new Map([["b.png", bytes]])), /no kit/);
    const kit = Buffer.from("[font 1]\nfile = /usr/share/fonts/A.ttf\nsize = 12\n");
    const built = await Kit.build(program, new Map([["a.kit", kit]]));
    assert.match(built.messages.join("\n"), /a\.kit:2.*\n.*hint: .*A\.ttf/);
});
