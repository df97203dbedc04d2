// The dots of the glass.
"use strict";

const fs = require("node:fs");
const zlib = require("node:zlib");
const { ProtocolError } = require("./faults.js");

const crcTable = Uint32Array.from({ length: 256 }, (_, byte) => {
    for (let bit = 0; bit < 8; ++bit) byte = (byte >>> 1) ^ (byte & 1 ? 0xedb88320 : 0);
    return byte;
});

function pngChunk(name, body) {
    const named = Buffer.concat([Buffer.from(name, "latin1"), body]);
    const chunk = Buffer.alloc(named.length + 8);
    chunk.writeUInt32BE(body.length, 0);
    named.copy(chunk, 4);
    chunk.writeUInt32BE(~named.reduce((crc, byte) => crcTable[(crc ^ byte) & 0xff] ^ (crc >>> 8), 0xffffffff) >>> 0,
        named.length + 4);
    return chunk;
}

class Screen {
    constructor(data, width, height) {
        this.data = data;
        this.width = width;
        this.height = height;
    }

    // The picture that a line `dots WIDTH HEIGHT HEX` holds.
    static read(printed) {
        const found = /^dots (\d+) (\d+) ([0-9A-Fa-f]+)$/.exec(printed);
        if (found !== null) {
            const screen = new Screen(new Uint8Array(Buffer.from(found[3], "hex")), Number(found[1]), Number(found[2]));
            if (screen.data.length === screen.stride * screen.height) return screen;
        }
        throw new ProtocolError(`the program prints dots otherwise: ${String(printed).slice(0, 60)}`);
    }

    get stride() {
        return (this.width + 7) >> 3;
    }

    dot(x, y) {
        if (!(x >= 0 && x < this.width && y >= 0 && y < this.height))
            throw new RangeError(`dot ${x}, ${y} is off the ${this.width} x ${this.height} dots`);
        return (this.data[y * this.stride + (x >> 3)] & (0x80 >> (x & 7))) !== 0;
    }

    equals(other) {
        return other instanceof Screen && other.width === this.width && other.height === this.height &&
            Buffer.compare(this.data, other.data) === 0;
    }

    png() {
        const rows = Buffer.alloc((this.stride + 1) * this.height);
        for (let y = 0; y < this.height; ++y)
            for (let at = 0; at < this.stride; ++at)
                rows[y * (this.stride + 1) + 1 + at] = ~this.data[y * this.stride + at] & 0xff;
        const head = Buffer.alloc(13);
        head.writeUInt32BE(this.width, 0);
        head.writeUInt32BE(this.height, 4);
        head[8] = 1;
        return new Uint8Array(Buffer.concat([
            Buffer.from("\x89PNG\r\n\x1a\n", "latin1"), pngChunk("IHDR", head), pngChunk("IDAT", zlib.deflateSync(rows)),
            pngChunk("IEND", Buffer.alloc(0)),
        ]));
    }

    save(file) {
        fs.writeFileSync(file, this.png());
    }

    // The picture in characters, `#` for a dark dot: a line for each row.
    toString() {
        const row = (y) => Array.from({ length: this.width }, (_, x) => (this.dot(x, y) ? "#" : ".")).join("");
        return Array.from({ length: this.height }, (_, y) => row(y)).join("\n");
    }
}

module.exports = { Screen };
