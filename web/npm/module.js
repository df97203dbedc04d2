// The module: sends, touches, reads, compares. Units, ranges and errors stand in index.d.ts.
"use strict";

const path = require("node:path");
const { fileURLToPath } = require("node:url");
const { OrvanelError, faultOf } = require("./faults.js");
const {
    dataHex, describe, known, numbers, part, pathText, phaseWord, programPath, quoted, quotedPath, where, wholeNumber,
} = require("./lines.js");
const { Screen } = require("./screen.js");
const { Talk } = require("./talk.js");
const tables = require("./tables.js");

const maxPlaces = 100000;  // of lines whose place among the tests is kept
const textOptions = ["inside", "near", "whole", "anyPhase"];
const pictureOptions = ["phase", "inside", "without"];

// The place in the tests that called this package: { file, line }, null if nobody knows.
function callerPlace() {
    const { prepareStackTrace, stackTraceLimit } = Error;
    try {
        Error.stackTraceLimit = 20;
        Error.prepareStackTrace = (_, sites) => sites;
        const ours = __dirname + path.sep;
        for (const site of new Error().stack) {
            const name = site.getFileName();
            if (!name || name.startsWith("node:")) continue;
            const file = name.startsWith("file:") ? fileURLToPath(name) : name;
            if (path.isAbsolute(file) && !file.startsWith(ours)) return { file, line: site.getLineNumber() };
        }
        return null;
    } catch {
        return null;
    } finally {
        Object.assign(Error, { prepareStackTrace, stackTraceLimit });
    }
}

// A fault's stack begins where the test called.
function withoutOurs(fault) {
    const ours = __dirname + path.sep;
    fault.stack = fault.stack?.split("\n").filter((line) => !/^ {4}at /.test(line) || !line.includes(ours)).join("\n");
    return fault;
}

function strictness(strict) {
    if (strict === false) return [];
    if (strict === true || strict === "remarks") return ["--strict"];
    if (strict === "hints") return ["--strict=hints"];
    throw new RangeError(`strict is true, false, 'remarks' or 'hints', not ${describe(strict)}`);
}

function updating(update) {
    if (update === false || update === "") return [];
    if (update === true || update === "1") return ["--update"];
    if (update === "missing") return ["--update-missing"];
    throw new RangeError(`update, or ORVANEL42_UPDATE, is true, false or 'missing', not ${describe(update)}`);
}

class Module {
    #talk = null;
    #folder;
    #traces;
    #traceRead = [];
    #places = new Map();
    ms = 0;
    events = [];

    static async start(options = {}) {
        const place = callerPlace();
        known(options, "kit", "image", "mem", "strict", "update", "trace", "out", "settle", "folder", "timeLimit");
        const module = new Module();
        await module.#start(options, place);
        return module;
    }

    async #start({
        kit, image, mem, strict = true, update = process.env.ORVANEL42_UPDATE ?? false, trace = false, out, settle = true,
        folder, timeLimit = 300000,
    }, place) {
        this.#folder = path.resolve(folder ?? (place === null ? "." : path.dirname(place.file)));
        this.#traces = trace;
        const words = [...strictness(strict), ...updating(update)];
        for (const [name, file] of [["--kit", kit], ["--image", image], ["--out", out]])
            if (file !== undefined) words.push(name, programPath(pathText(file), this.#folder));
        if (kit !== undefined && (image !== undefined || mem !== undefined))
            throw new TypeError("a kit brings its image and its size: give neither image nor mem beside it");
        if (mem !== undefined) words.push("--mem", wholeNumber(mem, "mem"));
        if (trace) words.push("--trace-json", "-");
        this.#talk = await Talk.start(words, programPath(".", this.#folder), timeLimit);
        try {
            if (settle) this.#ask(["settle"], place);
        } catch (fault) {
            this.#talk.kill();
            throw fault;
        }
    }

    // Talking

    command(line) {
        return this.#do(line);
    }

    // Plays lines. What the first one prints.
    #do(...lines) {
        return this.#ask(lines, callerPlace());
    }

    #ask(lines, place) {
        for (let number = this.#talk.linesSent + 1; number <= this.#talk.linesSent + lines.length; ++number) {
            this.#places.set(number, place);
            this.#places.delete(number - maxPlaces);
        }
        const answers = this.#talk.ask(lines);
        this.#take(answers);
        return answers[0].printed;
    }

    // Keeps what answers tell, and throws what they find fault with.
    #take(answers) {
        const records = [];
        for (const answer of answers) {
            this.ms = answer.ms;
            this.events.push(...answer.events);
            records.push(...answer.faults.map((record) => this.#inWordsOfTests(record)));
        }
        if (records.length > 0) throw withoutOurs(faultOf(records));
    }

    // Line numbers are those of the talk; who reads a message knows the lines of the test.
    #inWordsOfTests(record) {
        const placed = record.message.replace(/^-:(\d+)(?=:)|(?<=\()-:(\d+)(?=\)$)/gm, (whole, first, second) => {
            const place = this.#places.get(Number(first ?? second));
            return place ? `${path.relative(this.#folder, place.file)}:${place.line}` : whole;
        });
        return { ...record, message: placed.replaceAll("--update-missing", "ORVANEL42_UPDATE=missing") };
    }

    #settled(line, settle = true) {
        if (settle) this.#do(line, "settle");
        else this.#do(line);
    }

    // Bytes

    send(...data) {
        const last = data.at(-1);
        const hasOptions = typeof last === "object" && last !== null && !(last instanceof Uint8Array);
        const { settle } = hasOptions ? known(data.pop(), "settle") : {};
        const hex = dataHex(data);
        this.#settled("send " + (hex === "" ? '""' : hex), settle);
    }

    feed(file, options = {}) {
        this.#settled("feed " + quotedPath(file, this.#folder), known(options, "settle").settle);
    }

    open(file, options = {}) {
        const { x = 0, y = 0, settle } = known(options, "x", "y", "settle");
        this.#settled(`open ${quotedPath(file, this.#folder)} ${numbers([x, y], "a corner", 2)}`, settle);
    }

    settle(options = {}) {
        this.#do("settle " + wholeNumber(known(options, "within").within ?? 60000, "within"));
    }

    answers() {
        const printed = this.#do("answers");
        return printed.length === 0 ? new Uint8Array(0)
            : new Uint8Array(Buffer.from(printed[0].slice(printed[0].indexOf(" ") + 1).replaceAll(" ", ""), "hex"));
    }

    expectAnswers(...data) {
        this.#do("expect-answers " + dataHex(data));
    }

    awaitAnswers(data, options = {}) {
        const within = wholeNumber(known(options, "within").within ?? 5000, "within");
        this.#do(`await-answers ${dataHex(Array.isArray(data) ? data : [data])} within ${within}`);
    }

    allow(...names) {
        for (const name of names) this.#do("allow " + name);
    }

    // Touch

    #target(target) {
        if (Array.isArray(target)) return numbers(target, "a dot", 2);
        if (typeof target === "string") return quoted(target);
        if (typeof target !== "object" || target === null) return wholeNumber(target, "a code");
        if (target.label) return quoted(target.label);
        const middle = [(target.x1 + target.x2) / 2, (target.y1 + target.y2) / 2];
        return numbers(middle.map(Math.floor), "a dot", 2);
    }

    tap(target, options = {}) {
        const { ms, settle } = known(options, "ms", "settle");
        this.#settled(`tap ${this.#target(target)}${ms ? " for " + wholeNumber(ms, "ms") : ""}`, settle);
    }

    hold(target, options = {}) {
        this.#settled("hold " + this.#target(target), known(options, "settle").settle);
    }

    lift(options = {}) {
        this.#settled("lift", known(options, "settle").settle);
    }

    drag(target, to, options = {}) {
        const { settle } = known(options, "settle");
        let goal;
        if (Array.isArray(target)) goal = numbers(to, "a dot", 2);
        else if (typeof to !== "string") goal = wholeNumber(to, "a value");
        else if (/^\d{1,3} ?%$/.test(to)) goal = to;
        else throw new RangeError(`a bar goes to a value, or to percent as '70 %', not to ${describe(to)}`);
        this.#settled(`drag ${this.#target(target)} to ${goal}`, settle);
    }

    choose(row, options = {}) {
        this.#settled("choose " + this.#target(row), known(options, "settle").settle);
    }

    areas() {
        return tables.readAreas(this.#do("areas"));
    }

    bars() {
        return tables.readBars(this.#do("bars"));
    }

    menuRows() {
        return tables.readMenuRows(this.#do("menu-rows"));
    }

    // The glass

    text(options = {}) {
        const { inside, phase } = known(options, "inside", "phase");
        if (inside !== undefined) numbers(inside, "inside", 4);
        const isInside = ({ x1, y1, x2, y2 }) => inside === undefined ||
            (inside[0] <= x1 && x2 <= inside[2] && inside[1] <= y1 && y2 <= inside[3]);
        return tables.linesOf(this.texts({ phase }).filter(isInside));
    }

    texts(options = {}) {
        return tables.readTexts(this.#do("texts" + phaseWord(known(options, "phase").phase)));
    }

    expectText(text, options = {}) {
        this.#do(`expect-text ${quoted(text)}${where(known(options, ...textOptions))}`);
    }

    expectNoText(text, options = {}) {
        this.#do(`expect-no-text ${quoted(text)}${where(known(options, ...textOptions))}`);
    }

    awaitText(text, options = {}) {
        const { within = 5000 } = known(options, "within", ...textOptions);
        this.#do(`await-text ${quoted(text)}${where(options)} within ${wholeNumber(within, "within")}`);
    }

    expectTerminal(row, text) {
        this.#do(`expect-terminal ${wholeNumber(row, "row")} ${quoted(text)}`);
    }

    screen(options = {}) {
        return Screen.read(this.#do("dots" + phaseWord(known(options, "phase").phase))[0]);
    }

    expectScreen(picture, options = {}) {
        known(options, ...pictureOptions);
        this.#do(`expect-screen ${quotedPath(picture, this.#folder)}${phaseWord(options.phase)}${part(options)}`);
    }

    awaitScreen(picture, options = {}) {
        const { within = 5000, phase } = known(options, "within", ...pictureOptions);
        const limit = ` within ${wholeNumber(within, "within")}`;
        this.#do(`await-screen ${quotedPath(picture, this.#folder)}${phaseWord(phase)}${part(options)}${limit}`);
    }

    // The rest

    wait(ms) {
        this.#do("wait " + wholeNumber(ms, "ms"));
    }

    reset(kind = 0) {
        this.#do("reset " + wholeNumber(kind, "kind"), "settle");
    }

    get trace() {
        if (!this.#traces) throw new OrvanelError("no trace is kept: start the module with trace: true");
        for (const line of this.#talk.trace.slice(this.#traceRead.length)) this.#traceRead.push(JSON.parse(line));
        return [...this.#traceRead];
    }

    get isEnded() {
        return this.#talk.isEnded;
    }

    async close() {
        let last;
        try {
            last = this.#talk.end();
        } finally {
            await this.#talk.kill();
        }
        if (last !== null) this.#take([last]);
    }
}

// `using` and `await using`, where the system knows them.
if (Symbol.asyncDispose) Object.defineProperty(Module.prototype, Symbol.asyncDispose, { value: Module.prototype.close });

module.exports = { Module };
