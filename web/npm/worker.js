// The module's program, in a thread of its own: it waits for a line as a process waits for its standard
// input, and what it says goes to the thread that drives it.
"use strict";

const { receiveMessageOnPort, workerData } = require("node:worker_threads");
const Wasi = require("./wasi.js");
const { files } = require("./node_files.js");

const { port, turns, program, args, folder } = workerData;
const device = { type: "device", size: 0 };

function post(message) {
    port.postMessage(message);
    Atomics.add(turns, 1, 1);
    Atomics.notify(turns, 1);
}

// The next text of the driver, undefined at the end of all.
function nextText() {
    for (;;) {
        const seen = Atomics.load(turns, 0);
        const received = receiveMessageOnPort(port);
        if (received !== undefined) return received.message.text;
        Atomics.wait(turns, 0, seen);
    }
}

let waiting = Buffer.alloc(0);
let ended = false;
const input = {
    read(bytes) {
        if (waiting.length === 0 && !ended) {
            const text = nextText();
            ended = text === undefined;
            if (!ended) waiting = Buffer.from(text, "utf8");
        }
        const part = waiting.subarray(0, bytes.length);
        bytes.set(part);
        waiting = waiting.subarray(part.length);
        return part.length;
    },
    stat: () => device,
};

const output = (kind) => ({
    write(bytes) {
        post({ [kind]: bytes.slice() });
        return bytes.length;
    },
    stat: () => device,
});

let instance = null;
const world = {
    args, files,
    environment: ["PWD=" + folder],
    streams: [input, output("out"), output("told")],
    memory: () => instance.exports.memory,
};
try {
    instance = new WebAssembly.Instance(program, { wasi_snapshot_preview1: Wasi.imports(world) });
    instance.exports._start();
    post({ end: "ended with status 0" });
} catch (fault) {
    post({ end: fault instanceof Wasi.ProgramEnd ? `ended with status ${fault.status}` : `has stopped: ${fault.message}` });
}
port.close();
