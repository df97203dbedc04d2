// What the module has to touch and to read, as records. A table is printed with a line for its head.
"use strict";

const { ProtocolError } = require("./faults.js");
const { wordsOf } = require("./lines.js");

const corners = (words, at) => ({
    x1: Number(words[at]), y1: Number(words[at + 1]), x2: Number(words[at + 2]), y2: Number(words[at + 3]),
});

function text(w) {
    const at = w.indexOf("font", 6);
    return {
        ...corners(w, 1), text: w[5], font: Number(w[at + 1]), zoomX: Number(w[at + 3]), zoomY: Number(w[at + 4]),
        upward: w.includes("upward", at + 5), inverted: w.includes("inverted", at + 5),
    };
}

const area = (w) => ({
    number: Number(w[1]), type: w[2], ...corners(w, 3), downCode: Number(w[7]), upCode: Number(w[8]), label: w[9],
    state: w.slice(10).join(" "),
});

const bar = (w) => ({
    number: Number(w[1]), kind: w[2], direction: w[3], ...corners(w, 4), low: Number(w[8]), high: Number(w[9]),
    value: Number(w[10]),
});

const menuRow = (w) => ({
    number: Number(w[1]), kind: w[2], ...corners(w, 3), code: Number(w[7]), text: w[8], selected: w.includes("selected", 9),
});

const rows = (read) => (printed) => printed.slice(1).map((line) => {
    const row = read(wordsOf(line));
    if (Object.values(row).some((value) => value === undefined || Number.isNaN(value)))
        throw new ProtocolError(`the program prints a table otherwise: ${line}`);
    return row;
});

// All of these texts as lines from top to bottom.
function linesOf(texts) {
    const found = [];
    for (const one of [...texts].sort((a, b) => a.y1 - b.y1 || a.x1 - b.x1)) {
        const last = found.at(-1);
        if (last !== undefined && one.y1 <= (last[0].y1 + last[0].y2) / 2) last.push(one);
        else found.push([one]);
    }
    return found.map((row) => row.sort((a, b) => a.x1 - b.x1).map((one) => one.text).join(" ")).join("\n");
}

module.exports = { readTexts: rows(text), readAreas: rows(area), readBars: rows(bar), readMenuRows: rows(menuRow), linesOf };
