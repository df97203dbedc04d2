#!/usr/bin/env node
// headless.js: runs a program for WebAssembly in Node, with the files, the streams and the folder of this
// process: node headless.js PROGRAM.wasm [ARGUMENT...]
"use strict";

const fs = require("node:fs");
const path = require("node:path");
const Wasi = require("./wasi.js");
const { files, streams } = require("./node_files.js");

const [program, ...args] = process.argv.slice(2);
if (program === undefined) {
    process.stderr.write("usage: node headless.js PROGRAM.wasm [ARGUMENT...]\n");
    process.exit(2);
}

let instance = null;
const world = {
    args: [path.basename(program, ".wasm"), ...args],
    environment: ["PWD=" + process.cwd()],
    streams,
    files,
    memory: () => instance.exports.memory,
};
instance = new WebAssembly.Instance(new WebAssembly.Module(fs.readFileSync(program)),
    { wasi_snapshot_preview1: Wasi.imports(world) });
try {
    instance.exports._start();
} catch (fault) {
    if (!(fault instanceof Wasi.ProgramEnd)) throw fault;
    process.exitCode = fault.status;
}
