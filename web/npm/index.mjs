// The same for `import`.
import all from "./index.js";

export const {
    Module, Screen, OrvanelError, StartFailed, ProgramDied, ProtocolError, Fault, ExpectationFailed, GaveUp, Mistake,
    WrongLine,
} = all;
export default all;
