// The browser as a child process: orders come in as JSON lines, answers go out. It holds one Chromium
// and any number of pages, each in a context of its own, and knows nothing of the workbench.
//
// An order: {id, page, selector?, text?, do, args?}. Without a selector the method is the page's, with
// one the locator's; "keyboard.press" names a method of a part. What is not a method of Playwright
// stands in `own`.

import { createRequire } from "node:module";
import readline from "node:readline";

const require = createRequire(process.env.BROWSER_MODULES);
const { chromium } = require("playwright-core");

// Every wait of the page; wide enough for a busy machine.
const LIMIT = 20000;

const browser = await chromium.launch({
  executablePath: process.env.BROWSER_PROGRAM,
  // Root has no sandbox; the only pages are our own.
  args: ["--no-sandbox"],
});
const pages = new Map();

const own = {
  /**
   * Opens a page; answers with the status and the text of what the server sent. It shares cookies and
   * storage with the page `beside`, and evaluates `script` before its own.
   */
  async open({ page: name, args: [address, { beside, script, ...options }] }) {
    const context = beside
      ? pages.get(beside).context
      : await browser.newContext({ viewport: { width: 1280, height: 800 }, ...options });
    context.setDefaultTimeout(LIMIT);
    const page = await context.newPage();
    if (script) {
      await page.addInitScript(script);
    }
    const complaints = [];
    page.on("console", (said) => {
      if (said.type() === "error") {
        complaints.push(`${said.text()} ${said.location().url}`);
      }
    });
    page.on("pageerror", (error) => complaints.push(String(error)));
    pages.set(name, { page, context, complaints });
    const response = await page.goto(address);
    return { status: response.status(), text: await response.text() };
  },
  /** What the page complained of so far. */
  complaints: ({ page }) => pages.get(page).complaints,
  /** Clicks and answers with the name and the text of the file that is then saved. */
  async saved({ page: name, selector }) {
    const { page } = pages.get(name);
    const [download] = await Promise.all([page.waitForEvent("download"), page.locator(selector).click()]);
    const parts = [];
    for await (const part of await download.createReadStream()) {
      parts.push(part);
    }
    return { name: download.suggestedFilename(), text: Buffer.concat(parts).toString() };
  },
  /** Waits until an expression is true; evaluated from outside, as the page itself forbids that. */
  async until({ page: name, args: [expression] }) {
    const { page } = pages.get(name);
    const end = Date.now() + LIMIT;
    while (!(await page.evaluate(expression))) {
      if (Date.now() > end) {
        throw new Error(`not true within ${LIMIT} ms: ${expression}`);
      }
      await page.waitForTimeout(20);
    }
  },
  async close({ page }) {
    const { context } = pages.get(page);
    await pages.get(page).page.close();
    pages.delete(page);
    if (context.pages().length === 0) {
      await context.close();
    }
  },
};

function method(order) {
  const { page } = pages.get(order.page);
  let target = page;
  if (order.selector) {
    target = page.locator(order.selector, order.text ? { hasText: order.text } : {});
  }
  const path = order.do.split(".");
  const name = path.pop();
  for (const part of path) {
    target = target[part];
  }
  return target[name].bind(target);
}

async function carryOut(order) {
  try {
    const result = own[order.do] ? await own[order.do](order) : await method(order)(...(order.args ?? []));
    return { id: order.id, result: Buffer.isBuffer(result) ? null : result ?? null };
  } catch (error) {
    return { id: order.id, error: String(error.message ?? error) };
  }
}

for await (const line of readline.createInterface({ input: process.stdin })) {
  const answer = await carryOut(JSON.parse(line));
  process.stdout.write(`${JSON.stringify(answer)}\n`);
}
await browser.close();
