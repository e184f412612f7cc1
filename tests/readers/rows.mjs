// rows.mjs FIRST COUNT: rows of every type as JSON lines for `kelb db import`, their values computed from the number so
// that every reader's answer can be compared with the line that went in.
const [first, count] = process.argv.slice(2).map(Number);
const chinese = n => Array.from({ length: n }, (_, i) => String.fromCharCode(0x4e00 + ((i * 7919 + n) % 0x5000))).join("");
const memo = n => [null, "", "short", "x".repeat(70), chinese(30), chinese(900), chinese(1900), chinese(2500), chinese(60000)][n % 9];
const text = n => [`row ${n}`, "", null, "it's \"quoted\", and, commas", "网页内容 提取", "é ü ß", chinese(255)][n % 7];
for (let n = first; n < first + count; n++) {
    console.log(JSON.stringify({
        url: `http://forum.example/thread-${n}-1-1.html`,
        t: text(n),
        m: memo(n),
        yes: n % 3 === 0,
        b: n % 256,
        i: (n * 37) % 60000 - 30000,
        l: n % 5 === 0 ? null : (n * 104729) % 4000000000 - 2000000000,
        c: ((n % 2 ? -1 : 1) * n * 1.25).toFixed(4),
        s: n / 4,
        d: n % 4 === 0 ? null : -n / 8,
        dt: `20${10 + n % 15}-${String(1 + n % 12).padStart(2, "0")}-${String(1 + n % 28).padStart(2, "0")}T${String(n % 24).padStart(2, "0")}:${String(n % 60).padStart(2, "0")}:07`,
        n: ((n % 2 ? 1 : -1) * n * 3 / 100).toFixed(2),
    }));
}
