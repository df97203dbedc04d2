// node_files.js: the file system of Node for wasi.js, and its standard streams.
"use strict";

const fs = require("node:fs");

const type_of = (stat) =>
    stat.isFile() ? "file" : stat.isDirectory() ? "folder" : stat.isSymbolicLink() ? "link" : "device";

function told(stat) {
    return { type: type_of(stat), size: stat.size, device: stat.dev, number: stat.ino };
}

// A pipe whose other end is slow says EAGAIN.
function patiently(move) {
    for (;;) {
        try {
            return move();
        } catch (fault) {
            if (fault.code !== "EAGAIN") throw fault;
            Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, 5);
        }
    }
}

function read(fd, bytes, position) {
    try {
        return patiently(() => fs.readSync(fd, bytes, 0, bytes.length, position));
    } catch (fault) {
        if (fault.code === "EOF") return 0;  // a pipe on Windows
        throw fault;
    }
}

function stream(fd) {
    return {
        read: (bytes) => read(fd, bytes, null),
        write: (bytes) => patiently(() => fs.writeSync(fd, bytes)),
        stat: () => told(fs.fstatSync(fd)),
    };
}

function flags_of(wish) {
    const { O_RDONLY, O_WRONLY, O_RDWR, O_CREAT, O_EXCL, O_TRUNC, O_APPEND } = fs.constants;
    return (wish.write ? (wish.read ? O_RDWR : O_WRONLY) : O_RDONLY) | (wish.create ? O_CREAT : 0) |
        (wish.exclusive ? O_EXCL : 0) | (wish.truncate ? O_TRUNC : 0) | (wish.append ? O_APPEND : 0);
}

function open(path, wish) {
    const fd = fs.openSync(path, flags_of(wish), 0o666);
    let at = 0;
    return {
        read(bytes) {
            const n = read(fd, bytes, at);
            at += n;
            return n;
        },
        write(bytes) {
            const n = patiently(() => fs.writeSync(fd, bytes, 0, bytes.length, wish.append ? null : at));
            at += n;
            return n;
        },
        seek(offset, from) {
            at = offset + { start: 0, here: at, end: from === "end" ? fs.fstatSync(fd).size : 0 }[from];
            return at;
        },
        stat: () => told(fs.fstatSync(fd)),
        sync: () => fs.fsyncSync(fd),
        close: () => fs.closeSync(fd),
    };
}

const files = {
    stat: (path, follow) => told(follow ? fs.statSync(path) : fs.lstatSync(path)),
    open,
    mkdir: (path) => fs.mkdirSync(path),
    unlink: (path) => fs.unlinkSync(path),
    rmdir: (path) => fs.rmdirSync(path),
    rename: (from, to) => fs.renameSync(from, to),
    readlink: (path) => fs.readlinkSync(path),
};

module.exports = { files, streams: [stream(0), stream(1), stream(2)] };
