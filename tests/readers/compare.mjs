// compare.mjs OURS.jsonl mdbtools THEIRS.jsonl | mdb-reader FILE TABLE: exits with 1 at the first row that differs.
import fs from "node:fs";
import { createRequire } from "node:module";

const [ours, how, source, table] = process.argv.slice(2);
const lines = path => fs.readFileSync(path, "utf8").split("\n").filter(line => line !== "").map(line => JSON.parse(line));

// One form for the ways in which readers spell the same value.
const plain = value => {
    if (value === undefined || value === null) return null;
    if (typeof value === "boolean") return value;
    if (value instanceof Date) return value.toISOString().slice(0, 19);
    if (typeof value === "number") return String(value);
    if (typeof value === "string" && /^-?\d+\.\d+$/.test(value)) return String(Number(value));
    return value;
};

let theirs;
if (how === "mdb-reader") {
    const require = createRequire(process.env.KELB_READER_HOME + "/");
    const MDBReader = (await import(require.resolve("mdb-reader").replace(/node\/index\.cjs$/, "node/index.js"))).default;
    theirs = new MDBReader(fs.readFileSync(source)).getTable(table).getData();
} else {
    theirs = lines(source);
}
const mine = lines(ours);
if (mine.length === 0 || mine.length !== theirs.length) {
    console.error(`${mine.length} rows of ours, ${theirs.length} of theirs`);
    process.exit(1);
}
const byId = new Map(theirs.map(row => [Number(row.id), row]));
for (const row of mine) {
    const other = byId.get(row.id);
    for (const column of Object.keys(row)) {
        let [a, b] = [plain(row[column]), plain(other?.[column])];
        // mdb-json leaves Null out and writes yes/no as a number.
        if (typeof a === "boolean") b = b === true || b === "1" || b === "true";
        if (how === "mdbtools" && a === "" && b === null) continue; // it leaves empty texts out as well
        if (a !== b) {
            console.error(`id ${row.id}, column ${column}: ours ${JSON.stringify(a)?.slice(0, 200)}, theirs ${JSON.stringify(b)?.slice(0, 200)}`);
            process.exit(1);
        }
    }
}
console.log(`${mine.length} rows equal`);
