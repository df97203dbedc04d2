// zip.js: the files in a zip, for a kit that is dropped as one. A plain script: it defines `Zip`, and is a
// module for Node.
//
//   await Zip.read(bytes) -> Map of names with slashes to Uint8Arrays; throws a Zip.Refused with a message for
//   the user where the bytes are no zip, a damaged one, or one that no kit comes in.
//
// What a name in a zip leads to is decided here alone: names that lead out of it are refused, none is bent.
// Sizes are held against the limits before anything is unpacked, and what is unpacked against its size.
"use strict";

const Zip = (() => {
    const max_files = 2000;
    const max_file_bytes = 16 << 20;
    const max_bytes = 64 << 20;  // of all files together
    const max_name_bytes = 1000;

    const mib = (bytes) => `${bytes / (1 << 20)} MiB`;

    const end_size = 22, end_mark = 0x06054b50;
    const entry_size = 46, entry_mark = 0x02014b50;
    const head_size = 30, head_mark = 0x04034b50;
    const encrypted = 1, stored = 0, deflated = 8;
    const link_mode = 0o120000, kind_of_mode = 0o170000;

    class Refused extends Error {}

    const view_of = (bytes) => new DataView(bytes.buffer, bytes.byteOffset, bytes.length);

    function damaged(what) {
        return new Refused(`This zip is damaged: ${what}. Make it again.`);
    }

    // Where the record at the end of a zip stands; a comment of 64 KiB may follow it.
    function find_end(bytes, view) {
        const first = Math.max(0, bytes.length - end_size - 0xffff);
        for (let at = bytes.length - end_size; at >= first; --at)
            if (view.getUint32(at, true) === end_mark && at + end_size + view.getUint16(at + 20, true) === bytes.length)
                return at;
        throw new Refused("This is no zip, or its end is missing.");
    }

    function text_of(bytes) {
        try {
            return new TextDecoder("utf-8", { fatal: true }).decode(bytes);
        } catch {
            return Array.from(bytes, (byte) => String.fromCharCode(byte)).join("");
        }
    }

    // A name as it may be shown: no control character, and not longer than a line.
    const shown = (name) => name.replace(/[\p{C}]/gu, "?").slice(0, 80);

    // The name with slashes; throws where it leads anywhere but into the zip.
    function checked_name(raw) {
        const name = raw.replaceAll("\\", "/");
        const refuse = (why) => new Refused(`The zip holds a file named ${shown(raw)}, ${why}.`);
        if (name.startsWith("/") || /^[A-Za-z]:/.test(name)) throw refuse("which is an absolute name");
        if (name.split("/").includes("..")) throw refuse("which leads out of the zip");
        if (/[\0-\x1f\x7f]/.test(name)) throw refuse("which has control characters");
        const plain = name.split("/").filter((part) => part !== "" && part !== ".").join("/");
        if (plain === "") throw refuse("which is no name");
        return plain;
    }

    // What the system that made the zip has put beside the files.
    const is_of_system = (name) => name.startsWith("__MACOSX/") || /(^|\/)(\.DS_Store|Thumbs\.db|desktop\.ini)$/.test(name);

    function read_entry(bytes, view, at) {
        if (at + entry_size > bytes.length || view.getUint32(at, true) !== entry_mark)
            throw damaged("its list of files is cut");
        const word = (offset) => view.getUint16(at + offset, true);
        const long = (offset) => view.getUint32(at + offset, true);
        const name_end = at + entry_size + word(28);
        const next = name_end + word(30) + word(32);
        if (next > bytes.length) throw damaged("its list of files is cut");
        if (word(28) > max_name_bytes) throw new Refused("The zip holds a name of more than 1000 bytes.");
        const raw = text_of(bytes.subarray(at + entry_size, name_end));
        return {
            raw, next, flags: word(8), method: word(10), crc: long(16), packed: long(20), size: long(24), head: long(42),
            is_folder: /[\\/]$/.test(raw), is_link: ((long(38) >>> 16) & kind_of_mode) === link_mode,
        };
    }

    function refuse_kind({ raw, flags, method, packed, size, is_link }) {
        const name = shown(raw);
        if ((flags & encrypted) !== 0) throw new Refused(`${name} is encrypted: make a zip without a password.`);
        if (is_link) throw new Refused(`${name} is a link: put the file itself into the zip.`);
        if (packed === 0xffffffff || size === 0xffffffff || size > max_file_bytes)
            throw new Refused(`${name} has more than ${mib(max_file_bytes)}: a kit needs no such file.`);
        if (method !== stored && method !== deflated)
            throw new Refused(`${name} is packed in a way that is not read here: make a plain zip (deflate).`);
    }

    function list(bytes, view) {
        const end = find_end(bytes, view);
        const count = view.getUint16(end + 10, true);
        if (count > max_files) throw new Refused(`The zip holds more than ${max_files} files: no kit needs as many.`);
        const entries = new Map();
        let at = view.getUint32(end + 16, true);
        let total = 0;
        for (let i = 0; i < count; ++i) {
            const entry = read_entry(bytes, view, at);
            at = entry.next;
            const name = checked_name(entry.raw);
            if (entry.is_folder || is_of_system(name)) continue;
            refuse_kind(entry);
            total += entry.size;
            if (total > max_bytes) throw new Refused(`The zip unpacks to more than ${mib(max_bytes)}: no kit needs as much.`);
            if (entries.has(name)) throw new Refused(`The zip holds ${shown(name)} twice.`);
            entries.set(name, entry);
        }
        return entries;
    }

    function packed_bytes(bytes, view, { raw, head, packed }) {
        if (head + head_size > bytes.length || view.getUint32(head, true) !== head_mark)
            throw damaged(`${shown(raw)} is not where its list says`);
        const at = head + head_size + view.getUint16(head + 26, true) + view.getUint16(head + 28, true);
        if (at + packed > bytes.length) throw damaged(`${shown(raw)} is cut`);
        return bytes.subarray(at, at + packed);
    }

    function crc_of(bytes) {
        let crc = 0xffffffff;
        for (const byte of bytes) {
            crc ^= byte;
            for (let bit = 0; bit < 8; ++bit) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
        }
        return ~crc >>> 0;
    }

    // The system unpacks gzip everywhere; with its head and end a zip's bytes are that, sum included.
    async function inflate(packed, { crc, size, raw }) {
        const end = new DataView(new ArrayBuffer(8));
        end.setUint32(0, crc, true);
        end.setUint32(4, size, true);
        const head = new Uint8Array([0x1f, 0x8b, 8, 0, 0, 0, 0, 0, 0, 0xff]);
        const content = new Uint8Array(size);
        let at = 0;
        const unpacked = new Blob([head, packed, end.buffer]).stream().pipeThrough(new DecompressionStream("gzip"));
        const reader = unpacked.getReader();
        try {
            for (;;) {
                const { done, value } = await reader.read();
                if (done) break;
                if (at + value.length > size) throw damaged(`${shown(raw)} is larger than its list says`);
                content.set(value, at);
                at += value.length;
            }
        } catch (fault) {
            reader.cancel().catch(() => {});
            throw fault instanceof Refused ? fault : damaged(`${shown(raw)} doesn't unpack`);
        }
        if (at !== size) throw damaged(`${shown(raw)} is smaller than its list says`);
        return content;
    }

    async function content_of(bytes, view, entry) {
        const packed = packed_bytes(bytes, view, entry);
        if (entry.method === deflated) return inflate(packed, entry);
        if (packed.length !== entry.size || crc_of(packed) !== entry.crc)
            throw damaged(`${shown(entry.raw)} has other bytes than when it was packed`);
        return packed.slice();
    }

    async function read(bytes) {
        const view = view_of(bytes);
        const files = new Map();
        for (const [name, entry] of list(bytes, view)) files.set(name, await content_of(bytes, view, entry));
        return files;
    }

    return { Refused, read };
})();

if (typeof module !== "undefined") module.exports = Zip;
