// A run of the program: lines go in, one answer comes out for each.
"use strict";

const fs = require("node:fs");
const path = require("node:path");
const { MessageChannel, Worker, receiveMessageOnPort } = require("node:worker_threads");
const { OrvanelError, ProgramDied, ProtocolError, StartFailed } = require("./faults.js");
const { describe } = require("./lines.js");

const startLimit = 300000;  // ms
const version = 1;  // of the protocol
const maxLineBytes = 1 << 20;
const maxLastWords = 8192;
const programName = "orvanel42-headless";

let compiled = null;
function program() {
    compiled ??= WebAssembly.compile(fs.readFileSync(path.join(__dirname, programName + ".wasm")));
    return compiled;
}

const isText = (value) => typeof value === "string";
const isTexts = (value) => Array.isArray(value) && value.every(isText);
const isRecord = (value) =>
    isText(value?.kind) && isText(value.message) && isText(value.file) && Number.isInteger(value.line) && isTexts(value.files);
const isAnswer = (value) =>
    typeof value?.ok === "boolean" && typeof value.ms === "number" && isTexts(value.events) && isTexts(value.printed) &&
    Array.isArray(value.faults) && value.faults.every(isRecord);

function parsed(line) {
    try {
        return JSON.parse(line);
    } catch {
        throw new ProtocolError(`the program answers with no JSON object: ${describe(line.slice(0, 200))}`);
    }
}

// A module that nobody holds any more leaves no thread behind.
const forgotten = new FinalizationRegistry((worker) => void worker.terminate());

class Talk {
    #worker;
    #port;
    #turns = new Int32Array(new SharedArrayBuffer(8));  // how often the worker, and this thread, got something
    #limit;
    #out = { text: "", decoder: new TextDecoder() };
    #told = { text: "", decoder: new TextDecoder() };
    #lastWords = "";
    #fault = null;  // why nothing can be asked any more
    linesSent = 0;
    trace = [];  // lines of JSON

    static async start(options, folder, limit) {
        return new Talk(await program(), options, folder, limit);
    }

    constructor(module, options, folder, limit) {
        this.#limit = limit;
        const { port1, port2 } = new MessageChannel();
        this.#port = port1;
        this.#worker = new Worker(path.join(__dirname, "worker.js"), {
            workerData: { port: port2, turns: this.#turns, program: module, args: [programName, "--json", ...options, "-"], folder },
            transferList: [port2],
            execArgv: [],
        });
        // It ends when this thread does.
        this.#worker.unref();
        // What ends the worker shows as an answer that doesn't come.
        this.#worker.on("error", () => {});
        forgotten.register(this, this.#worker, this);
        try {
            this.#greet(parsed(this.#nextLine(startLimit, "")));
        } catch (fault) {
            this.kill();
            throw fault instanceof ProgramDied ? new StartFailed(fault.lastWords || fault.message) : fault;
        }
    }

    #greet({ protocol }) {
        if (protocol === version) return;
        throw new ProtocolError(`the program speaks version ${protocol} of the protocol, and this package speaks ${version}`);
    }

    // The answers to these lines, which have no ends. From a ProgramDied or ProtocolError on always the same one.
    ask(lines) {
        for (const line of lines)
            if (/[\n\r]/.test(line) || Buffer.byteLength(line) > maxLineBytes)
                throw new RangeError(`no line of at most ${maxLineBytes} bytes: ${describe(line.slice(0, 60))}`);
        if (this.#fault !== null) throw this.#fault;
        try {
            this.#send({ text: lines.map((line) => line + "\n").join("") });
            return lines.map((line) => {
                this.linesSent += 1;
                const answer = parsed(this.#nextLine(this.#limit, line));
                if (!isAnswer(answer) || answer.line !== this.linesSent) throw this.#otherwise(answer);
                return answer;
            });
        } catch (fault) {
            this.#fault = fault;
            this.kill();
            throw fault;
        }
    }

    #otherwise(answer) {
        return new ProtocolError(`the program answers otherwise than agreed: ${JSON.stringify(answer).slice(0, 200)}`);
    }

    // Ends the program in order. Its last answer; null if it has ended before.
    end() {
        if (this.#fault !== null) return null;
        this.#fault = new OrvanelError("the module is closed");
        try {
            this.#send({});
            const answer = parsed(this.#nextLine(this.#limit, ""));
            if (!isAnswer(answer) || answer.end !== true) throw this.#otherwise(answer);
            return answer;
        } finally {
            this.kill();
        }
    }

    // Ends the program at once. The promise is fulfilled when its thread is gone.
    kill() {
        this.#fault ??= new OrvanelError("the module is closed");
        this.#take();
        forgotten.unregister(this);
        this.#port.close();
        return this.#worker.terminate();
    }

    get isEnded() {
        return this.#fault !== null;
    }

    #send(message) {
        this.#port.postMessage(message);
        Atomics.add(this.#turns, 0, 1);
        Atomics.notify(this.#turns, 0);
    }

    #nextLine(limit, asked) {
        const end = performance.now() + limit;
        for (;;) {
            const seen = Atomics.load(this.#turns, 1);
            const ending = this.#take();
            const at = this.#out.text.indexOf("\n");
            if (at >= 0) {
                const line = this.#out.text.slice(0, at);
                this.#out.text = this.#out.text.slice(at + 1);
                return line;
            }
            if (ending !== undefined) throw this.#died(ending, asked);
            const left = end - performance.now();
            if (left <= 0) throw this.#died(`gave no answer within ${limit} ms and was ended`, asked);
            Atomics.wait(this.#turns, 1, seen, left);
        }
    }

    #died(how, asked) {
        const lastWords = (this.#lastWords + this.#told.text).trim();
        return new ProgramDied(`${programName} ${how}` + (asked === "" ? "" : `, at: ${asked.slice(0, 200)}`) +
            (lastWords === "" ? "" : `\n${lastWords}`), lastWords);
    }

    // Takes what has come; how the program has ended, if it has.
    #take() {
        let ending;
        for (let received; (received = receiveMessageOnPort(this.#port)) !== undefined;) {
            const { out, told, end } = received.message;
            if (out !== undefined) this.#out.text += this.#out.decoder.decode(out, { stream: true });
            if (told !== undefined) this.#takeTold(told);
            if (end !== undefined) ending = end;
        }
        return ending;
    }

    // Lines of the trace are kept, of all others the end.
    #takeTold(bytes) {
        const lines = (this.#told.text + this.#told.decoder.decode(bytes, { stream: true })).split("\n");
        this.#told.text = lines.pop();
        for (const line of lines)
            if (line.startsWith('{"time":')) this.trace.push(line);
            else this.#lastWords = (this.#lastWords + line + "\n").slice(-maxLastWords);
    }
}

module.exports = { Talk };
