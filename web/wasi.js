// wasi.js: what a program of ours for WebAssembly asks of the system below it (WASI, preview 1), over a
// small file system that Node or the page gives. A plain script: it defines `Wasi`, and is a module
// for Node.
//
// The file system `files` has these operations on absolute paths, which throw a FileFault:
//   stat(path, follow) -> { type: "file" | "folder" | "link" | "device", size, device, number }
//   open(path, { read, write, create, exclusive, truncate, append, folder }) -> a handle
//   mkdir(path), unlink(path), rmdir(path), rename(from, to), readlink(path) -> text
// and a handle has these:
//   read(bytes) -> count, write(bytes) -> count, seek(offset, from) -> position, stat(), sync(), close()
"use strict";

const Wasi = (() => {
    // The numbers of the faults, by the names that they have everywhere.
    const errno = {
        E2BIG: 1, EACCES: 2, EAGAIN: 6, EBADF: 8, EBUSY: 10, EEXIST: 20, EFBIG: 22, EINVAL: 28, EIO: 29,
        EISDIR: 31, ELOOP: 32, EMFILE: 33, ENAMETOOLONG: 37, ENFILE: 41, ENODEV: 43, ENOENT: 44,
        ENOMEM: 48, ENOSPC: 51, ENOSYS: 52, ENOTDIR: 54, ENOTEMPTY: 55, ENOTSUP: 58, ENXIO: 60, EPERM: 63,
        EPIPE: 64, EROFS: 69, ESPIPE: 70, ETXTBSY: 74, EXDEV: 75,
    };
    const type_number = { device: 2, folder: 3, file: 4, link: 7 };
    const root_fd = 3;
    const all_rights = 0x1fffffffn;

    class FileFault extends Error {
        constructor(code) {
            super(code);
            this.code = code;
        }
    }

    // The program has called exit.
    class ProgramEnd {
        constructor(status) {
            this.status = status;
        }
    }

    // The imports of a program. `args` begins with its name, `environment` holds texts NAME=VALUE, and
    // `streams` the handles of standard input, output and error. `memory` gives the program's memory.
    function imports({ args, environment = [], streams, files, memory }) {
        const handles = new Map([...streams.entries()]);
        handles.set(root_fd, { folder: "/" });
        let next_fd = root_fd + 1;

        const view = () => new DataView(memory().buffer);
        const bytes_at = (at, size) => new Uint8Array(memory().buffer, at, size);
        // The decoder refuses shared memory, and none is shared here.
        const text_at = (at, size) => new TextDecoder().decode(bytes_at(at, size));
        const encoded = (texts) => texts.map((text) => new TextEncoder().encode(text + "\0"));

        function handle_of(fd) {
            const handle = handles.get(fd);
            if (handle === undefined) throw new FileFault("EBADF");
            return handle;
        }

        function path_in(fd, at, size) {
            const { folder } = handle_of(fd);
            if (folder === undefined) throw new FileFault("ENOTDIR");
            const path = text_at(at, size);
            return path.startsWith("/") ? path : folder + (folder.endsWith("/") ? "" : "/") + path;
        }

        function put_list(texts, pointers_at, bytes_from) {
            for (const bytes of encoded(texts)) {
                view().setUint32(pointers_at, bytes_from, true);
                bytes_at(bytes_from, bytes.length).set(bytes);
                pointers_at += 4;
                bytes_from += bytes.length;
            }
        }

        function put_list_sizes(texts, count_at, size_at) {
            view().setUint32(count_at, texts.length, true);
            view().setUint32(size_at, encoded(texts).reduce((sum, bytes) => sum + bytes.length, 0), true);
        }

        function put_stat(at, { type, size, device = 0, number = 0 }) {
            const out = view();
            out.setBigUint64(at, BigInt(device), true);
            out.setBigUint64(at + 8, BigInt(number), true);
            out.setUint8(at + 16, type_number[type]);
            out.setBigUint64(at + 24, 1n, true);
            out.setBigUint64(at + 32, BigInt(size), true);
            for (const time of [40, 48, 56]) out.setBigUint64(at + time, 0n, true);
        }

        // A read or write that goes through several blocks of memory; it ends where one is cut short.
        function move_blocks(list_at, count, result_at, move) {
            let moved = 0;
            for (let i = 0; i < count; ++i) {
                const at = view().getUint32(list_at + 8 * i, true);
                const size = view().getUint32(list_at + 8 * i + 4, true);
                const n = size === 0 ? 0 : move(bytes_at(at, size));
                moved += n;
                if (n < size) break;
            }
            view().setUint32(result_at, moved, true);
        }

        const calls = {
            args_get: (pointers, bytes) => put_list(args, pointers, bytes),
            args_sizes_get: (count, size) => put_list_sizes(args, count, size),
            environ_get: (pointers, bytes) => put_list(environment, pointers, bytes),
            environ_sizes_get: (count, size) => put_list_sizes(environment, count, size),
            clock_time_get(clock, precision, at) {
                const ms = clock === 0 ? Date.now() : performance.now();
                view().setBigUint64(at, BigInt(Math.round(ms * 1e6)), true);
            },
            random_get: (at, size) => void globalThis.crypto.getRandomValues(bytes_at(at, size)),
            sched_yield() {},
            proc_exit(status) {
                throw new ProgramEnd(status);
            },
            fd_prestat_get(fd, at) {
                if (fd !== root_fd) throw new FileFault("EBADF");
                view().setUint32(at, 0, true);
                view().setUint32(at + 4, 1, true);
            },
            fd_prestat_dir_name: (fd, at, size) => void bytes_at(at, size).fill("/".charCodeAt(0)),
            fd_fdstat_get(fd, at) {
                const handle = handle_of(fd);
                const type = handle.folder === undefined ? handle.stat().type : "folder";
                const out = view();
                out.setUint8(at, type_number[type]);
                out.setUint16(at + 2, 0, true);
                out.setBigUint64(at + 8, all_rights, true);
                out.setBigUint64(at + 16, all_rights, true);
            },
            fd_fdstat_set_flags() {},
            fd_filestat_get(fd, at) {
                const handle = handle_of(fd);
                put_stat(at, handle.folder === undefined ? handle.stat() : files.stat(handle.folder, true));
            },
            fd_read(fd, list, count, result) {
                const handle = handle_of(fd);
                if (handle.folder !== undefined) throw new FileFault("EISDIR");
                move_blocks(list, count, result, (bytes) => handle.read(bytes));
            },
            fd_write(fd, list, count, result) {
                const handle = handle_of(fd);
                move_blocks(list, count, result, (bytes) => handle.write(bytes));
            },
            fd_seek(fd, offset, from, result) {
                const handle = handle_of(fd);
                if (handle.seek === undefined) throw new FileFault("ESPIPE");
                const position = handle.seek(Number(offset), ["start", "here", "end"][from]);
                view().setBigUint64(result, BigInt(position), true);
            },
            fd_sync: (fd) => void handle_of(fd).sync?.(),
            fd_datasync: (fd) => void handle_of(fd).sync?.(),
            fd_close(fd) {
                handle_of(fd).close?.();
                handles.delete(fd);
            },
            path_open(fd, follow, at, size, how, rights, inherited, flags, result) {
                const path = path_in(fd, at, size);
                const folder = (how & 2) !== 0;
                let handle = { folder: path };
                if (!folder || files.stat(path, true).type !== "folder") {
                    const wish = {
                        read: (rights & 2n) !== 0n,
                        write: (rights & 64n) !== 0n,
                        create: (how & 1) !== 0,
                        exclusive: (how & 4) !== 0,
                        truncate: (how & 8) !== 0,
                        append: (flags & 1) !== 0,
                        folder,
                    };
                    handle = files.open(path, wish);
                }
                handles.set(next_fd, handle);
                view().setUint32(result, next_fd++, true);
            },
            path_filestat_get(fd, follow, at, size, result) {
                put_stat(result, files.stat(path_in(fd, at, size), (follow & 1) !== 0));
            },
            path_create_directory: (fd, at, size) => files.mkdir(path_in(fd, at, size)),
            path_unlink_file: (fd, at, size) => files.unlink(path_in(fd, at, size)),
            path_remove_directory: (fd, at, size) => files.rmdir(path_in(fd, at, size)),
            path_rename(fd, at, size, to_fd, to_at, to_size) {
                files.rename(path_in(fd, at, size), path_in(to_fd, to_at, to_size));
            },
            path_readlink(fd, at, size, to, room, result) {
                const text = new TextEncoder().encode(files.readlink(path_in(fd, at, size)));
                const part = text.subarray(0, room);
                bytes_at(to, room).set(part);
                view().setUint32(result, part.length, true);
            },
        };

        const guarded = (call) => (...values) => {
            try {
                call(...values);
                return 0;
            } catch (fault) {
                const number = errno[fault.code];
                if (number === undefined) throw fault;
                return number;
            }
        };
        // What isn't here the program may name, but then it is told that there is no such thing.
        return new Proxy(calls, {
            get: (all, name) => (name in all ? guarded(all[name]) : () => errno.ENOSYS),
        });
    }

    return { FileFault, ProgramEnd, imports };
})();

if (typeof module !== "undefined") module.exports = Wasi;
