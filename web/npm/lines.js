// What stands in a line of a scenario, written and read.
"use strict";

const path = require("node:path");

const maxSendBytes = 80000;  // the room of the module's input
const letters = { "\\": "\\", '"': '"', n: "\n", r: "\r", t: "\t", e: "\x1b" };

// The text in double quotes, for a label or what stands on the glass.
function quoted(text) {
    if (typeof text !== "string") throw new TypeError(`a text is a string, not ${describe(text)}`);
    // eslint-disable-next-line no-control-regex
    return '"' + text.replace(/[\\"]/g, "\\$&").replace(/[\x00-\x1f\x7f]/g,
        (character) => "\\x" + character.charCodeAt(0).toString(16).toUpperCase().padStart(2, "0")) + '"';
}

// A path as the program has it: absolute, with slashes, also where it begins with a drive.
function programPath(name, folder) {
    const whole = path.resolve(folder, name);
    return path.sep === "\\" ? "/" + whole.replaceAll("\\", "/") : whole;
}

function quotedPath(name, folder) {
    const whole = programPath(pathText(name), folder);
    if (/["\n\r\0]/.test(whole))
        throw new RangeError(`a path can't hold double quotes, line ends or zero bytes: ${JSON.stringify(whole)}`);
    return `"${whole}"`;
}

function pathText(name) {
    if (typeof name !== "string" || name === "") throw new TypeError(`a file is named by a string, not ${describe(name)}`);
    return name;
}

function describe(value) {
    if (typeof value === "string") return JSON.stringify(value);
    if (Array.isArray(value)) return `[${value.map(describe).join(", ")}]`;
    return String(value);
}

// The pieces one after the other: bytes as they are, a string of ASCII, a number 0 to 255.
function dataHex(pieces) {
    const whole = Buffer.concat(pieces.map((piece) => {
        if (typeof piece === "string") {
            if (/[^\x00-\x7f]/.test(piece))
                throw new RangeError(`${describe(piece)} has characters beyond ASCII: send the module's codes of them as bytes`);
            return Buffer.from(piece, "latin1");
        }
        if (typeof piece === "number") {
            if (!Number.isInteger(piece) || piece < 0 || piece > 255) throw new RangeError(`${piece} is no byte: 0 to 255`);
            return Buffer.from([piece]);
        }
        if (piece instanceof Uint8Array) return piece;
        throw new TypeError(`Uint8Array, string or number are sent, not ${describe(piece)}`);
    }));
    if (whole.length > maxSendBytes)
        throw new RangeError(`${whole.length} bytes are more than the ${maxSendBytes} that the module has room for: ` +
            "send them in parts, or feed a file");
    return whole.toString("hex");
}

function wholeNumber(value, what) {
    if (!Number.isSafeInteger(value)) throw new TypeError(`${what} is a whole number, not ${describe(value)}`);
    return String(value);
}

// So many numbers, as a rectangle or a dot.
function numbers(values, what, count) {
    if (!Array.isArray(values) || values.length !== count)
        throw new TypeError(`${what} is ${count} whole numbers in a list, not ${describe(values)}`);
    return values.map((value) => wholeNumber(value, what)).join(" ");
}

// What stands after a text that is looked for.
function where({ inside, near, whole = false, anyPhase = false }) {
    return (inside === undefined ? "" : " in " + numbers(inside, "inside", 4)) +
        (near === undefined ? "" : " near " + quoted(near)) + (whole ? " whole" : "") + (anyPhase ? " in any phase" : "");
}

// Which part of a picture is compared.
function part({ inside, without = [] }) {
    return (inside === undefined ? "" : " in " + numbers(inside, "inside", 4)) +
        without.map((area) => " except " + numbers(area, "each of without", 4)).join("");
}

function phaseWord(phase) {
    if (![undefined, "main", "flash"].includes(phase)) throw new RangeError(`phase is 'main' or 'flash', not ${describe(phase)}`);
    return phase === undefined ? "" : " " + phase;
}

// The options of a call, all of which it has to know.
function known(options, ...names) {
    if (typeof options !== "object" || options === null) throw new TypeError(`options are an object, not ${describe(options)}`);
    for (const name of Object.keys(options))
        if (!names.includes(name)) throw new TypeError(`there is no option ${name} here; there are ${names.join(", ")}`);
    return options;
}

// The words of a printed line. A text in quotes is one word, without its quotes and escapes.
function wordsOf(line) {
    return Array.from(line.matchAll(/"((?:[^"\\]|\\.)*)"|(\S+)/g), ([, text, word]) =>
        word ?? text.replace(/\\(x[0-9A-Fa-f]{2}|.)/g, (whole, what) =>
            what.length === 3 ? String.fromCharCode(parseInt(what.slice(1), 16)) : letters[what] ?? what));
}

module.exports = {
    quoted, programPath, quotedPath, pathText, describe, dataHex, wholeNumber, numbers, where, part, phaseWord, known, wordsOf,
};
