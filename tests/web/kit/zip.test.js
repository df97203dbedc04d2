// Zips that are dropped: what is in them, or words that say why not.
"use strict";

const assert = require("node:assert/strict");
const path = require("node:path");
const { test } = require("node:test");
const zlib = require("node:zlib");

const Zip = require(path.join(__dirname, "../../../web/zip.js"));

// A zip of entries { name, content, ... }, whose fields may lie.
function zip_of(entries, { comment = "", count } = {}) {
    const parts = [], list = [];
    let at = 0;
    for (const entry of entries) {
        const content = Buffer.from(entry.content ?? "");
        const packed = entry.stored ? content : zlib.deflateRawSync(content);
        const name = Buffer.from(entry.name);
        const crc = Buffer.from(zlib.gzipSync(content)).subarray(-8, -4);
        const fields = Buffer.alloc(22);
        fields.writeUInt16LE(entry.flags ?? 0x800, 0);
        fields.writeUInt16LE(entry.method ?? (entry.stored ? 0 : 8), 2);
        crc.copy(fields, 8);
        fields.writeUInt32LE(packed.length, 12);
        fields.writeUInt32LE(entry.size ?? content.length, 16);
        fields.writeUInt16LE(name.length, 20);
        const head = Buffer.concat([Buffer.from("PK\x03\x04\x14\x00", "latin1"), fields, Buffer.alloc(2), name, packed]);
        const rest = Buffer.alloc(16);
        rest.writeUInt32LE(((entry.mode ?? 0o100644) << 16) >>> 0, 8);
        rest.writeUInt32LE(entry.head ?? at, 12);
        list.push(Buffer.concat([Buffer.from("PK\x01\x02\x14\x03\x14\x00", "latin1"), fields, rest, name]));
        parts.push(head);
        at += head.length;
    }
    const listed = Buffer.concat(list);
    const end = Buffer.alloc(22);
    end.write("PK\x05\x06", "latin1");
    end.writeUInt16LE(count ?? entries.length, 8);
    end.writeUInt16LE(count ?? entries.length, 10);
    end.writeUInt32LE(listed.length, 12);
    end.writeUInt32LE(at, 16);
    end.writeUInt16LE(comment.length, 20);
    return new Uint8Array(Buffer.concat([...parts, listed, end, Buffer.from(comment)]));
}

const read = async (...entries) =>
    [...(await Zip.read(zip_of(entries)))].map(([name, content]) => [name, Buffer.from(content).toString()]);
const refused = (bytes, words) =>
    assert.rejects(Zip.read(bytes), (fault) => fault instanceof Zip.Refused && words.test(fault.message) || assert.fail(fault));

test("files come with their names, packed and plain, without what systems add", async () => {
    const long = "dots ".repeat(5000);
    assert.deepEqual(
        await read({ name: "panel/" }, { name: "panel/panel.kit", content: long }, { name: "./panel\\größe.png", content: "b", stored: true },
            { name: "__MACOSX/panel/._panel.kit", content: "x" }, { name: "panel/.DS_Store", content: "x" }, { name: "empty" }),
        [["panel/panel.kit", long], ["panel/größe.png", "b"], ["empty", ""]]);
    assert.equal((await Zip.read(zip_of([{ name: "a" }], { comment: "said PK\x05\x06 here" }))).size, 1);
});

test("names that lead out of a zip are refused", async () => {
    for (const name of ["../a", "a/../../b", "..\\a", "/etc/passwd", "\\\\host\\a", "C:\\a", "c:a", "a/..", "a\nb"])
        await refused(zip_of([{ name }]), /which/);
});

test("what a kit doesn't need is refused before it is unpacked", async () => {
    await refused(zip_of([{ name: "a", content: Buffer.alloc(17 << 20) }]), /16 MiB/);
    const bomb = Array.from({ length: 5 }, (_, i) => ({ name: "a" + i, content: Buffer.alloc(15 << 20) }));
    await refused(zip_of(bomb), /64 MiB/);
    await refused(zip_of([{ name: "a", content: Buffer.alloc(1 << 20), size: 10 }]), /larger|unpack/);
    await refused(zip_of(Array.from({ length: 2001 }, (_, i) => ({ name: "a" + i }))), /2000 files/);
    await refused(zip_of([{ name: "a", flags: 1 }]), /encrypted/);
    await refused(zip_of([{ name: "a", method: 14 }]), /plain zip/);
    await refused(zip_of([{ name: "a", mode: 0o120777 }]), /link/);
    await refused(zip_of([{ name: "a" }, { name: "./a" }]), /twice/);
});

test("whatever is damaged ends in words", async () => {
    const whole = zip_of([{ name: "a.kit", content: "text ".repeat(400) }, { name: "b", content: "plain", stored: true }]);
    await refused(new Uint8Array(0), /no zip/);
    await refused(zip_of([{ name: "a" }], { count: 3 }), /damaged/);
    await refused(zip_of([{ name: "a", head: 0x7fffffff }]), /damaged/);
    for (let at = 0; at < whole.length; ++at) {
        for (const bytes of [whole.slice(0, at), Uint8Array.from(whole, (byte, i) => (i === at ? byte ^ 0xff : byte))]) {
            try {
                await Zip.read(bytes);
            } catch (fault) {
                assert.ok(fault instanceof Zip.Refused, `${at}: ${fault.stack}`);
            }
        }
    }
});
