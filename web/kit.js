// kit.js: the kit compiler in the page or in Node, by orvanel42-kit.wasm, which is loaded only for it. A plain
// script: it defines `Kit`, and is a module for Node. Needs wasi.js and memory_files.js, and zip.js
// for Kit.unpack alone.
//
//   await Kit.build(program, files, name) -> { status, messages, summary, image, stream }
//     program   WebAssembly.Module of orvanel42-kit.wasm
//     files     Map of names with slashes (panel.kit, fonts/small.bdf) to Uint8Arrays: a dropped
//               folder, or what Kit.unpack gives. A kit reads no other file; one that it names from the root of
//               a system, as fonts are, is looked for among these by its last name
//     name      which of them is the kit; if it isn't given Kit.find looks for it
//     status    0 all well, 1 something is wrong in the kit or in a file that it names, 2 the kit itself
//               can't be read, 3 the compiler has stopped
//     messages  what is wrong, as orvanel42-kit says it: `panel.kit:2:3: error: ...`
//     summary   what the image holds, in a line: its length, its CRC; empty unless status is 0
//     image     Uint8Array, the EEPROM image; null unless status is 0
//     stream    Uint8Array, the command stream that programs it; null unless status is 0
//   Kit.find(files) -> the name of the one kit that lies nearest to the top; throws a Kit.Refused that says
//               which there are
//   await Kit.unpack(bytes) -> the files of a zip; throws a Zip.Refused (zip.js)
//
// build keeps the thread busy while it compiles, for an ordinary kit some 100 ms: a page that shows something
// meanwhile calls it in a Worker, which it can also end.
"use strict";

const Kit = (() => {
    const in_node = typeof module !== "undefined";
    const { imports, ProgramEnd } = in_node ? require("./wasi.js") : Wasi;
    const { over } = in_node ? require("./memory_files.js") : MemoryFiles;
    const zip = () => (in_node ? require("./zip.js") : Zip);

    // Where the files lie while it runs, and what no kit can name.
    const root = "/kit/", image_path = "/out/image.bin", stream_path = "/out/stream.eep";

    class Refused extends Error {}

    function find(files) {
        const kits = [...files.keys()].filter((name) => name.toLowerCase().endsWith(".kit"));
        if (kits.length === 0) throw new Refused("There is no kit among these files: its name ends in .kit.");
        const depth = (name) => name.split("/").length;
        const least = Math.min(...kits.map(depth));
        const top = kits.filter((name) => depth(name) === least);
        if (top.length > 1) throw new Refused(`There are several kits: ${top.sort().join(", ")}. Open one of them.`);
        return top[0];
    }

    function output() {
        const decoder = new TextDecoder();
        let text = "";
        return {
            write(bytes) {
                text += decoder.decode(bytes, { stream: true });
                return bytes.length;
            },
            stat: () => ({ type: "device", size: 0 }),
            lines: () => (text + decoder.decode()).split("\n").filter((line) => line !== ""),
        };
    }

    const last_name = (path) => path.slice(path.lastIndexOf("/") + 1);

    // The files, and those of a system by their last names; `missing` gets such names that aren't there.
    function with_system_files(memory_files, missing) {
        const plain = over(memory_files);
        const place_of = (path) => {
            if (path.startsWith(root) || path.startsWith("/out/")) return path;
            const name = last_name(path);
            const found = [...memory_files.keys()].find((file) => last_name(file) === name && file.startsWith(root));
            if (found === undefined && /[^.]\.\w+$/.test(name)) missing.add(name);
            return found ?? path;
        };
        return {
            ...plain,
            stat: (path) => plain.stat(place_of(path)),
            open: (path, wish) => plain.open(place_of(path), wish),
        };
    }

    async function run(program, args, files, streams) {
        let instance = null;
        const world = { args, environment: ["PWD=" + root.slice(0, -1)], streams, files, memory: () => instance.exports.memory };
        instance = await WebAssembly.instantiate(program, { wasi_snapshot_preview1: imports(world) });
        try {
            instance.exports._start();
        } catch (end) {
            if (end instanceof ProgramEnd) return { status: end.status };
            return { status: 3, fault: end };
        }
        return { status: 0 };
    }

    async function build(program, files, name = find(files)) {
        const memory_files = new Map(), missing = new Set();
        for (const [file, content] of files) memory_files.set(root + file, content);
        const told = output(), said = output();
        const input = { read: () => 0, stat: () => ({ type: "device", size: 0 }) };
        const args = ["orvanel42-kit", "build", name, "-o", image_path, "-o", stream_path];
        const { status, fault } = await run(program, args, with_system_files(memory_files, missing), [input, said, told]);
        const messages = told.lines();
        for (const file of missing)
            messages.push(`${name}: hint: here is no folder of a system: put ${file} among the files of the kit`);
        if (fault !== undefined) messages.push(`${name}: error: the kit compiler has stopped: ${fault.message}`);
        return {
            status, messages,
            summary: said.lines().find((line) => line.startsWith("image: "))?.slice("image: ".length) ?? "",
            image: status === 0 ? memory_files.get(image_path) : null,
            stream: status === 0 ? memory_files.get(stream_path) : null,
        };
    }

    return { Refused, find, build, unpack: (bytes) => zip().read(bytes) };
})();

if (typeof module !== "undefined") module.exports = Kit;
