// memory_files.js: a small file system in memory for wasi.js. A plain script: it defines `MemoryFiles`, and
// is a module for Node. `MemoryFiles.over(files)` gives the operations that wasi.js asks for on a Map of
// absolute paths to Uint8Arrays, which what is written comes into. Folders are those that files lie in.
"use strict";

const MemoryFiles = (() => {
    const { FileFault } = typeof module !== "undefined" ? require("./wasi.js") : Wasi;

    function over(files) {
        const plain = (path) => {
            const parts = [];
            for (const part of path.split("/")) {
                if (part === "..") parts.pop();
                else if (part !== "" && part !== ".") parts.push(part);
            }
            return "/" + parts.join("/");
        };
        const is_folder = (path) => {
            const start = path === "/" ? "/" : path + "/";
            return path === "/" || [...files.keys()].some((name) => name.startsWith(start));
        };
        const numbers = new Map();
        const number_of = (path) => {
            if (!numbers.has(path)) numbers.set(path, numbers.size + 1);
            return numbers.get(path);
        };

        function stat(name) {
            const path = plain(name);
            const content = files.get(path);
            if (content !== undefined && !name.endsWith("/"))
                return { type: "file", size: content.length, number: number_of(path) };
            if (is_folder(path)) return { type: "folder", size: 0, number: number_of(path) };
            throw new FileFault(content === undefined ? "ENOENT" : "ENOTDIR");
        }

        function open(name, wish) {
            const path = plain(name);
            if (name.endsWith("/") || is_folder(path)) throw new FileFault("EISDIR");
            if (!files.has(path)) {
                if (!wish.create) throw new FileFault("ENOENT");
                files.set(path, new Uint8Array(0));
            } else if (wish.exclusive) {
                throw new FileFault("EEXIST");
            } else if (wish.truncate) {
                files.set(path, new Uint8Array(0));
            }
            let at = 0;
            return {
                read(bytes) {
                    const part = files.get(path).subarray(at, at + bytes.length);
                    bytes.set(part);
                    at += part.length;
                    return part.length;
                },
                write(bytes) {
                    const old = files.get(path);
                    if (wish.append) at = old.length;
                    const all = new Uint8Array(Math.max(old.length, at + bytes.length));
                    all.set(old);
                    all.set(bytes, at);
                    files.set(path, all);
                    at += bytes.length;
                    return bytes.length;
                },
                seek(offset, from) {
                    const to = offset + { start: 0, here: at, end: files.get(path).length }[from];
                    if (to < 0) throw new FileFault("EINVAL");
                    return (at = to);
                },
                stat: () => stat(path),
            };
        }

        function unlink(name) {
            if (!files.delete(plain(name))) throw new FileFault("ENOENT");
        }

        function rename(from, to) {
            const content = files.get(plain(from));
            if (content === undefined) throw new FileFault("ENOENT");
            unlink(from);
            files.set(plain(to), content);
        }

        function refused() {
            throw new FileFault("ENOTSUP");
        }

        function readlink(name) {
            stat(name);
            throw new FileFault("EINVAL");
        }

        return { stat, open, unlink, rename, readlink, mkdir: refused, rmdir: refused };
    }

    return { over };
})();

if (typeof module !== "undefined") module.exports = MemoryFiles;
