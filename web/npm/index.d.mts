// The same for `import`.
export * from "./index.js";
import * as all from "./index.js";
export default all;
