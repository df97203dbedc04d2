// The HD Orvanel42 display module for tests: send, touch by label, read the glass, compare pictures.
//
//     const { Module } = require("orvanel42");
//
//     const module = await Module.start({ kit: "page.kit" });
//     module.tap("Start");
//     module.expectText("22.0", { near: "Target" });
//     module.expectScreen("running.png");
//     await module.close();
//
// Only `start` and `close` are awaited. All else is done when the call returns, in the module's own time, and
// throws at once: no test goes green since an await was forgotten.

declare global {
    interface SymbolConstructor {
        readonly asyncDispose: unique symbol;
    }
}

/** x1, y1, x2, y2: dots of the glass, corners included. */
export type Rectangle = readonly [number, number, number, number];
/** x 0 to 239, y 0 to 127. */
export type Dot = readonly [number, number];
/** Bytes, text in ASCII, or a number 0 to 255. */
export type Data = Uint8Array | string | number;
/** The phase of flashing; without it the one that shows. */
export type Phase = "main" | "flash";
/** The label, the code, a dot, or a row of `areas`. */
export type Target = string | number | Dot | Area;

export interface StartOptions {
    /** A kit that is built into the EEPROM. It brings its size: no `image` or `mem` beside it. */
    kit?: string;
    /** An EEPROM image. Without kit and image the EEPROM is blank. */
    image?: string;
    /** The size of the EEPROM in KiB, 32 if not given. */
    mem?: 32 | 64;
    /** A remark of the trace is a Mistake, true if not given; with `hints` a hint is one too, with false neither. */
    strict?: boolean | "remarks" | "hints";
    /**
     * Pictures are written, not compared: true, or `missing` for those that aren't there. The variable ORVANEL42_UPDATE
     * says the same, `1` or `missing`.
     */
    update?: boolean | "missing";
    /** What the module makes of each byte is kept for `trace`. */
    trace?: boolean;
    /** The folder for pictures of failed comparisons; beside the expected ones if not given. */
    out?: string;
    /** Whether to wait until the module is quiet after its power-on, true if not given. */
    settle?: boolean;
    /** The folder that all paths start from; that of the file that calls `start` if not given. */
    folder?: string;
    /** Milliseconds of the real clock after which a program that doesn't answer is ended, 300000 if not given. */
    timeLimit?: number;
}

export interface Settling {
    /** Whether to wait until the module is quiet again, true if not given; see `settle`. */
    settle?: boolean;
}

export interface TextOptions {
    /** The part of the glass that has to hold it. */
    inside?: Rectangle;
    /** A text next to it, 60 dots beside and 20 above or below at most. */
    near?: string;
    /** Nothing may go on before or after it. */
    whole?: boolean;
    /** Either phase of flashing will do, not only the present one. */
    anyPhase?: boolean;
}

export interface PictureOptions {
    phase?: Phase;
    /** The part that is compared. */
    inside?: Rectangle;
    /** Parts that are left out. */
    without?: readonly Rectangle[];
}

export interface Within {
    /** Milliseconds of the module's time, 5000 if not given. */
    within?: number;
}

interface Corners {
    x1: number;
    y1: number;
    x2: number;
    y2: number;
}

/** A text that can be read on the glass. */
export interface Text extends Corners {
    text: string;
    /** Number of the font, 0 the built-in one. */
    font: number;
    /** 1 to 4. */
    zoomX: number;
    zoomY: number;
    /** Turned by 90 degrees. */
    upward: boolean;
    inverted: boolean;
}

/** A row of the touch table. */
export interface Area extends Corners {
    /** From 1. */
    number: number;
    /** key, switch, bar, draw, opener, list or report */
    type: string;
    /** Of a press, 0 for none. */
    downCode: number;
    /** Of a release, 0 for none. */
    upCode: number;
    label: string;
    /** Such as `up`, `on`, `off group 2`, `bar 3`, `closed`. */
    state: string;
}

/** A bar graph. */
export interface Bar extends Corners {
    /** 1 to 32 */
    number: number;
    /** bar or pointer */
    kind: string;
    /** left, right, up or down */
    direction: string;
    /** The lowest value of its scale. */
    low: number;
    high: number;
    value: number;
}

/** A row of the open menu box. */
export interface MenuRow extends Corners {
    /** From 1. */
    number: number;
    /** `list` for the finger, `box` of the device */
    kind: string;
    /** 0 for none. */
    code: number;
    text: string;
    selected: boolean;
}

/** One thing that was not as it should be. */
export interface FaultRecord {
    kind: "expectation" | "settle" | "line" | "remark" | "hint" | string;
    /** For the person who reads it, in several lines if there is a drawing. */
    message: string;
    file: string;
    line: number;
    /** The pictures that were written about it. */
    files: string[];
}

/** What the glass shows. */
export class Screen {
    /** Rows from the top, `stride` bytes each, leftmost dot in bit 7, 1 is dark. */
    readonly data: Uint8Array;
    /** Dots, 240. */
    readonly width: number;
    /** Dots, 128. */
    readonly height: number;
    /** Bytes of a row. */
    readonly stride: number;
    private constructor();
    /** Whether the dot is dark. Throws a RangeError off the picture. */
    dot(x: number, y: number): boolean;
    /** Whether all dots are those of the other one. */
    equals(other: Screen): boolean;
    /** The picture as a PNG file, dark dots black. */
    png(): Uint8Array;
    /** Writes it; a path that isn't absolute starts from the process's folder. */
    save(file: string): void;
    /** The picture in characters, `#` for a dark dot: a line for each row. */
    toString(): string;
}

/** A simulated module of its own, from its power-on to `close`. What is not as expected throws a Fault. */
export class Module {
    private constructor();
    /**
     * Starts a module, in a thread of its own. Throws a StartFailed with the program's own words, and a Fault for
     * what shows at the power-on, such as a Mistake in the kit's macros.
     */
    static start(options?: StartOptions): Promise<Module>;

    /** Milliseconds of the module's clock after the last call. */
    readonly ms: number;
    /** What the module did on its own: `beep`, `message "CAPTION" "TEXT"`; empty it as you like. */
    events: string[];
    /** Whether the module has ended. */
    readonly isEnded: boolean;
    /**
     * What the module made of each byte so far, in order: the objects that the manual's page of the trace describes.
     * Throws an OrvanelError unless the module began with `trace: true`.
     */
    readonly trace: Record<string, unknown>[];

    /**
     * Sends bytes to the module, of one call 80000 at most, and waits until it has taken them:
     * `send("#ZL10,10,Hi\n")`, `send(0x1b, "?")`.
     */
    send(...data: Data[]): void;
    send(...data: [...Data[], Settling]): void;
    /** Feeds a file of commands, block by block each 100 ms, and waits until all is taken. */
    feed(file: string, options?: Settling): void;
    /** Opens a file as the window does: a picture is drawn at x, y; a kit is built and fed; all else is fed. */
    open(file: string, options?: Settling & { x?: number; y?: number }): void;
    /**
     * Waits until the module has taken no byte for 20 ms of its time and none is left for it, 60000 ms at most.
     * What sends or touches does so by itself.
     */
    settle(options?: Within): void;
    /** Takes all that the module has answered. */
    answers(): Uint8Array;
    /** Takes all answers: they have to be these bytes, without data none. */
    expectAnswers(...data: Data[]): void;
    /** Waits for answers that begin with these bytes, and takes these alone. Other bytes in their place fail at once. */
    awaitAnswers(data: Data | Data[], options?: Within): void;
    /**
     * What is found of these kinds with the next call is no Mistake. The name of a kind stands in brackets after what
     * was found.
     */
    allow(...names: string[]): void;

    /**
     * Puts the finger on a key or switch and takes it off as soon as the module has seen it, `ms` later at least.
     * Throws an ExpectationFailed if there is no such thing, or more than one.
     */
    tap(target: Target, options?: Settling & { ms?: number }): void;
    /** Puts the finger there and leaves it for `lift`; one that is down slides there. */
    hold(target: Target, options?: Settling): void;
    /** Takes the finger off. */
    lift(options?: Settling): void;
    /**
     * Drags a touch bar, by the text nearest to it or its number, to a value of its scale or to percent of it,
     * `drag("Volume", "70 %")`; or the finger from dot to dot.
     */
    drag(target: string | number, to: number | string, options?: Settling): void;
    drag(target: Dot, to: Dot, options?: Settling): void;
    /** Taps a row of the open menu list, by what it says or by its number from 1. */
    choose(row: string | number, options?: Settling): void;
    /** The touch table. */
    areas(): Area[];
    /** The bar graphs, whether or not they can be touched. */
    bars(): Bar[];
    /** The rows of the open menu box; none if there is none. */
    menuRows(): MenuRow[];

    /** All that can be read on the glass, or in a part of it, as lines from top to bottom. */
    text(options?: { inside?: Rectangle; phase?: Phase }): string;
    /** What can be read on the glass: each text with its place, font and zoom. */
    texts(options?: { phase?: Phase }): Text[];
    /** The glass has to show the text, dot by dot in one of the module's fonts. */
    expectText(text: string, options?: TextOptions): void;
    /** The glass must not show the text. */
    expectNoText(text: string, options?: TextOptions): void;
    /** Waits until the glass shows the text. */
    awaitText(text: string, options?: TextOptions & Within): void;
    /** Row 1 to 16 of the terminal has to show the text and nothing after it. */
    expectTerminal(row: number, text: string): void;
    /** What the glass shows. */
    screen(options?: { phase?: Phase }): Screen;
    /** The glass has to show this picture, a .png or .pbm, or it is written where `update` says so. */
    expectScreen(picture: string, options?: PictureOptions): void;
    /** Waits until the glass shows the picture. */
    awaitScreen(picture: string, options?: PictureOptions & Within): void;

    /** Lets so many milliseconds of the module's time pass. */
    wait(ms: number): void;
    /** Resets the module, 0 (power-on) to 3, and waits until it is quiet. */
    reset(kind?: 0 | 1 | 2 | 3): void;
    /** Plays any line of a scenario. What it prints, line by line. */
    command(line: string): string[];

    /** Ends the module. May be called again. Throws a Fault for what showed only at the end. */
    close(): Promise<void>;
    /** For `await using`, where the system knows it. */
    [Symbol.asyncDispose](): Promise<void>;
}

/** The base of all errors of this package. */
export class OrvanelError extends Error {}
/** The program ended before it greeted, say since the kit has a fault. The message is its own. */
export class StartFailed extends OrvanelError {}
/** The program ended, or had to be ended, in the middle of a talk. */
export class ProgramDied extends OrvanelError {
    /** The end of what it wrote on standard error. */
    readonly lastWords: string;
}
/** What came is no answer of the protocol. */
export class ProtocolError extends OrvanelError {}
/** Something was not as it should be. The text is what a scenario would tell. */
export class Fault extends OrvanelError {
    readonly records: FaultRecord[];
    /** The pictures that were written about it. */
    readonly files: string[];
}
/** The module shows, says or has something else than expected. */
export class ExpectationFailed extends Fault {}
/** The module didn't come to rest in the time that `settle` had. */
export class GaveUp extends Fault {}
/** What the module was sent has a mistake that `strict` counts: a remark or a hint of the trace. */
export class Mistake extends Fault {}
/** A value that the program refuses, or a file that can't be read or written. */
export class WrongLine extends Fault {}
