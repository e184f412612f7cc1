// readability.mjs linkedom|jsdom PAGES OUT: the article that Firefox's reader view would show, of every page of a folder, as text.
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";

// The packages stand beside neither this file nor the pages: bench/peers/run says where.
const load = createRequire(join(process.env.KELB_PEERS, "package.json"));
const { Readability } = load("@mozilla/readability");
const [dom, pages, out] = process.argv.slice(2);
const parsers = {
  linkedom: () => {
    const { parseHTML } = load("linkedom");
    return (html) => ({ document: parseHTML(html).document, close() {} });
  },
  jsdom: () => {
    const { JSDOM } = load("jsdom");
    return (html) => {
      const page = new JSDOM(html, { url: "http://bbs.example.net/" });
      return { document: page.window.document, close: () => page.window.close() };
    };
  },
};
const parse = parsers[dom]();
const decoder = new TextDecoder("gbk");
for (const name of readdirSync(pages).filter((file) => file.endsWith(".htm"))) {
  const { document, close } = parse(decoder.decode(readFileSync(join(pages, name))));
  const article = new Readability(document).parse();
  writeFileSync(join(out, name.replace(/htm$/, "txt")), article?.textContent ?? "");
  close();
  await new Promise(setImmediate); // a closed window is freed between tasks only
}
