// What can go wrong, as errors. Each has its message for the person who reads it.
"use strict";

class OrvanelError extends Error {
    get name() {
        return this.constructor.name;
    }
}

// The program ended before it greeted, say since the kit has a fault. The message is its own.
class StartFailed extends OrvanelError {}

// The program ended, or had to be ended, in the middle of a talk.
class ProgramDied extends OrvanelError {
    constructor(message, lastWords = "") {
        super(message);
        this.lastWords = lastWords;
    }
}

// What came is no answer of the protocol that this package speaks.
class ProtocolError extends OrvanelError {}

// Something was not as it should be; `records` has what, one by one.
class Fault extends OrvanelError {
    constructor(records) {
        super(records.map((record) => record.message).join("\n"));
        this.records = records;
    }

    // The pictures that were written about it.
    get files() {
        return this.records.flatMap((record) => record.files);
    }
}

class ExpectationFailed extends Fault {}
class GaveUp extends Fault {}
class Mistake extends Fault {}
class WrongLine extends Fault {}

// The fault that counts most gives the class.
const classes = [
    ["line", WrongLine], ["settle", GaveUp], ["expectation", ExpectationFailed], ["remark", Mistake], ["hint", Mistake],
];

function faultOf(records) {
    const kinds = new Set(records.map((record) => record.kind));
    const found = classes.find(([kind]) => kinds.has(kind));
    return new (found === undefined ? Fault : found[1])(records);
}

module.exports = {
    OrvanelError, StartFailed, ProgramDied, ProtocolError, Fault, ExpectationFailed, GaveUp, Mistake, WrongLine, faultOf,
};
