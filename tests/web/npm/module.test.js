// The package for npm, as a test of a device drives it.
"use strict";

const assert = require("node:assert/strict");
const { spawnSync } = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { test } = require("node:test");
const {
    ExpectationFailed, GaveUp, Mistake, Module, OrvanelError, ProgramDied, StartFailed, WrongLine,
} = require("orvanel42");

// A title, two keys with labels.
const page = '#TA\n#AF0,#ZF0,#ZL10,10,Target 22.5\n#AT20,60,90,90,65,97,CHeat\n#AT140,60,220,90,66,98,CStop\n';

async function started(t, options) {
    const module = await Module.start(options);
    t.after(() => module.close());
    return module;
}

async function paged(t, options) {
    const module = await started(t, options);
    module.send(page);
    return module;
}

function scratch(t) {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), "orvanel42-"));
    t.after(() => fs.rmSync(folder, { recursive: true, force: true }));
    return folder;
}

const like = (kind, words) => (fault) => fault instanceof kind && words.test(fault.message) || assert.fail(fault);

test("touches by label, code, dot and row", async (t) => {
    const module = await paged(t);
    module.tap("Heat");
    module.expectAnswers("\x1bA\x01A\x1bA\x01a");
    for (const target of [66, [180, 75], module.areas()[1]]) {
        module.tap(target);
        module.awaitAnswers([0x1b, "A", 1, "B", Uint8Array.of(0x1b, 0x41, 1, 0x62)]);
    }
    module.hold("Stop");
    assert.equal(module.areas()[1].state, "down");
    module.lift();
    assert.deepEqual(Buffer.from(module.answers()).toString("latin1"), "\x1bA\x01B\x1bA\x01b");
    assert.equal(module.answers().length, 0);
});

test("says what there is instead, and where the test asked", async (t) => {
    const module = await paged(t);
    assert.throws(() => module.tap("Warmer"), like(ExpectationFailed, /^no key 'Warmer'; there are 'Heat' \(65\), 'Stop' \(66\)$/));
    assert.throws(() => module.expectText("23", { near: "Target" }), like(ExpectationFailed, /"23" can't be read near "Target"/));
    module.expectText("22.5", { near: "Target" });  // the talk goes on
    module.expectNoText("22.5", { inside: [0, 60, 239, 127] });
    assert.throws(() => module.awaitText("Ready", { within: 30 }), like(ExpectationFailed, /within 30 ms/));
    try {
        module.tap("Warmer");
    } catch (fault) {
        assert.equal(fault.name, "ExpectationFailed");
        assert.match(fault.stack.split("\n    at ")[1], /module\.test\.js/);
    }
});

test("what the glass says comes as records", async (t) => {
    const module = await paged(t);
    assert.equal(module.text(), "Target 22.5\nHeat Stop");
    const [first] = module.texts();
    assert.deepEqual([first.text, first.x1, first.y1, first.font, first.inverted], ["Target 22.5", 10, 10, 0, false]);
    const [heat] = module.areas();
    assert.deepEqual([heat.type, heat.x1, heat.y2, heat.downCode, heat.label], ["key", 20, 90, 65, "Heat"]);
    module.send('#AT20,100,100,120,67,99,a "b"\n');
    module.tap('a "b"');
    module.expectAnswers("\x1bA\x01C\x1bA\x01c");
});

test("bars, menus and the terminal", async (t) => {
    const module = await started(t);
    module.send("#TA\n#ZF0,#AF0,#BR1,10,20,210,40,0,100,1,2,\n#BA1,20,#AB1,\n#ZL10,5,Volume\n");
    module.drag("Volume", "70 %");
    const [bar] = module.bars();
    assert.deepEqual([bar.number, bar.direction, bar.low, bar.high, bar.value], [1, "right", 0, 100, 70]);
    module.drag(1, 30);
    assert.equal(module.bars()[0].value, 30);
    module.drag([110, 30], [20, 30]);
    assert.ok(module.bars()[0].value < 10);
    assert.deepEqual(module.menuRows(), []);
    module.reset();
    module.send(Uint8Array.of(12), "Hello");
    module.expectTerminal(1, "Hello");
});

test("pictures are written where update says so, and compared after that", async (t) => {
    const folder = scratch(t);
    const writer = await paged(t, { folder, update: "missing" });
    writer.expectScreen("glass.png");
    const module = await paged(t, { folder, update: false });
    module.expectScreen("glass.png");
    module.screen().save(path.join(folder, "saved.png"));
    module.expectScreen("saved.png");
    module.awaitScreen("saved.png", { inside: [0, 0, 99, 99], without: [[3, 3, 4, 4]], within: 10 });
    module.send("#RL0,0,30,30,\n");
    assert.throws(() => module.expectScreen("glass.png"), (fault) => {
        assert.ok(fault instanceof ExpectationFailed && fault.files.length >= 1, fault);
        return fault.files.every((file) => fs.existsSync(file));
    });
    assert.throws(() => module.expectScreen("none.png"), /ORVANEL42_UPDATE=missing/);
    const screen = module.screen();
    assert.deepEqual([screen.width, screen.height, screen.data.length], [240, 128, 3840]);
    assert.ok(screen.equals(module.screen()) && !screen.equals(writer.screen()));
    assert.equal(screen.toString().split("\n")[0][0] === "#", screen.dot(0, 0));
    assert.throws(() => screen.dot(240, 0), RangeError);
});

test("strict counts remarks, in the place that sent the bytes", async (t) => {
    const module = await started(t);
    assert.throws(() => module.send("#ZF9,"), like(Mistake, /^module\.test\.js:\d+: warning: .*font 9 is missing \[no-font\]/));
    module.allow("no-font");
    module.send("#ZF9,", { settle: false });
    module.settle();
    (await started(t, { strict: false })).send("#ZF9,");
});

test("the trace tells each command", async (t) => {
    const module = await started(t, { trace: true });
    module.send("#TA#ZF0,");
    assert.deepEqual(module.trace.filter((event) => event.command).map((event) => event.command), ["# T A", "# Z F"]);
    const other = await started(t);
    assert.throws(() => other.trace, like(OrvanelError, /trace: true/));
});

test("the clock is the module's", async (t) => {
    const module = await started(t);
    const begin = module.ms;
    module.wait(3600000);
    assert.equal(module.ms - begin, 3600000);
    assert.throws(() => module.settle({ within: 1 }), like(GaveUp, /within 1 ms/));
});

test("a kit is built, and one with a fault says which", async (t) => {
    const folder = scratch(t);
    fs.writeFileSync(path.join(folder, "page.kit"), '[power-on macro 0]\n#TA\n#AF0\n#AT20,60,90,90,65,97,"CHeat"\n');
    fs.writeFileSync(path.join(folder, "bad.kit"), "[normal macro 0]\n#GX\n");
    const module = await started(t, { folder, kit: "page.kit" });
    module.tap("Heat");
    await assert.rejects(Module.start({ folder, kit: "bad.kit" }), like(StartFailed, /bad\.kit:2:3: error: group G has/));
    await assert.rejects(Module.start({ folder, kit: "none.kit" }), like(StartFailed, /none\.kit/));
});

test("what no line can hold is refused before it is sent", async (t) => {
    const module = await paged(t);
    for (const wrong of [() => module.send("grün"), () => module.send(256), () => module.send(1.5), () => module.send([1]),
        () => module.send("x".repeat(80001)), () => module.tap({}), () => module.tap(undefined), () => module.tap([1]),
        () => module.drag("Volume", "much"), () => module.expectText(22), () => module.expectText("a", { nere: "b" }),
        () => module.expectText("a", { inside: [1, 2, 3] }), () => module.screen({ phase: "both" }), () => module.wait("5"),
        () => module.expectScreen(""), () => module.expectScreen('a".png'), () => module.command("wait 1\nwait 1")])
        assert.throws(wrong, (fault) => fault instanceof TypeError || fault instanceof RangeError || assert.fail(fault), String(wrong));
    assert.throws(() => module.command("tapp"), like(WrongLine, /tapp/));
    assert.throws(() => module.tap(300), OrvanelError);
    module.expectText("22.5");
    for (const options of [{ kit: 5 }, { kid: "a.kit" }, { strict: "very" }, { update: "all" }, { kit: "a.kit", mem: 64 }])
        await assert.rejects(Module.start(options), (fault) => fault instanceof TypeError || fault instanceof RangeError);
});

test("texts of any characters are looked for or refused in words", async (t) => {
    const module = await paged(t);
    for (const text of ['"\\', "a\nb", "\x00\x7f", "é€😀", "\ud800", "x".repeat(5000)]) {
        try {
            module.expectNoText(text);
        } catch (fault) {
            assert.ok(fault instanceof WrongLine, fault);
        }
    }
    module.expectText("22.5");
});

test("many at once, each its own", async () => {
    const modules = await Promise.all(Array.from({ length: 6 }, () => Module.start()));
    modules.forEach((module, i) => module.send(`#TA#ZF0,#ZL10,10,number ${i}\n`));
    modules.forEach((module, i) => module.expectText(`number ${i}`));
    await Promise.all(modules.map((module) => module.close()));
    await modules[0].close();
    assert.ok(modules.every((module) => module.isEnded));
    assert.throws(() => modules[0].wait(1), like(OrvanelError, /closed/));
});

test("a program without an answer is ended, and nothing waits for it", async () => {
    const module = await Module.start({ settle: false, timeLimit: 200 });
    assert.throws(() => module.wait(1000000000), like(ProgramDied, /no answer within 200 ms.*wait 1000000000/));
    assert.throws(() => module.wait(1), ProgramDied);
    await module.close();
});

// A process whose tests forgot to close, or threw, comes to its end.
test("a module that is forgotten holds no process", () => {
    const script = 'require("orvanel42").Module.start().then((module) => { module.wait(5); console.log(module.text() + "done"); })';
    const { status, stdout, stderr } = spawnSync(process.execPath, ["-e", script], { cwd: __dirname, encoding: "utf8", timeout: 120000 });
    assert.deepEqual([status, stdout, stderr], [0, "done\n", ""]);
});
