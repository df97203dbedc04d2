// The HD Orvanel42 display module for tests.
"use strict";

const { Module } = require("./module.js");
const { Screen } = require("./screen.js");
const faults = require("./faults.js");

module.exports = {
    Module,
    Screen,
    OrvanelError: faults.OrvanelError,
    StartFailed: faults.StartFailed,
    ProgramDied: faults.ProgramDied,
    ProtocolError: faults.ProtocolError,
    Fault: faults.Fault,
    ExpectationFailed: faults.ExpectationFailed,
    GaveUp: faults.GaveUp,
    Mistake: faults.Mistake,
    WrongLine: faults.WrongLine,
};
