// A real browser in front of a real server, for browser_test.mjs and for the pictures of the docs.
import {spawn} from "node:child_process";
import {mkdtempSync, rmSync} from "node:fs";
import {tmpdir} from "node:os";
import {dirname, join} from "node:path";
import {fileURLToPath} from "node:url";

const tree = join(dirname(fileURLToPath(import.meta.url)), "../../..");
const {chromium} = await import(join(tree, "web/node_modules/playwright-core/index.mjs"));

export {tree};

// `tamarin serve` over a playing directory; ends with stop().
export async function serve(directory, more = []) {
  const programs = process.env.TAMARIN_PROGRAMS ?? join(tree, "build/release/bin");
  const server = spawn(join(programs, "tamarin"), ["serve", "--dir", directory, ...more], {stdio: ["ignore", "pipe", "ignore"]});
  const address = await new Promise((found, failed) => {
    server.once("exit", (status) => failed(new Error(`tamarin serve ended with ${status}`)));
    server.stdout.once("data", (line) => found(String(line).trim()));
  });
  const ended = new Promise((done) => server.once("exit", done));
  return {
    address,
    pid: server.pid,
    stop: async () => {
      server.kill("SIGINT");
      await ended;
    },
  };
}

// A browser without a past, which reaches nothing but this machine.
export async function browse(options = {}) {
  const profile = mkdtempSync(join(tmpdir(), "tamarin-browser-"));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    headless: true,
    args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking", "--disable-component-update", "--disable-sync"],
    viewport: {width: 1100, height: 860},
    ...options,
  });
  context.setDefaultTimeout(30000);
  return {
    context,
    page: context.pages()[0] ?? (await context.newPage()),
    close: async () => {
      await context.close();
      rmSync(profile, {recursive: true, force: true});
    },
  };
}

// What the table waits for: "turn", "between" or "over"; waits itself until it is one of them.
export async function await_(page) {
  const handle = await page.waitForFunction(() => {
    const controls = document.querySelector(".controls");
    if (!controls) return null;
    if (controls.dataset.turn === "yes") return {phase: "turn", key: `${controls.dataset.hand}/${controls.dataset.actions}`};
    const phase = controls.dataset.phase;
    return phase === "between" || phase === "over" ? {phase, key: `${controls.dataset.hand}/${phase}`} : null;
  });
  return handle.jsonValue();
}

// The same, once it is something else than before.
export async function awaitAfter(page, key) {
  await page.waitForFunction((before) => {
    const controls = document.querySelector(".controls");
    if (!controls) return false;
    const {turn, phase, hand, actions} = controls.dataset;
    if (turn === "yes") return `${hand}/${actions}` !== before;
    return (phase === "between" || phase === "over") && `${hand}/${phase}` !== before;
  }, key);
  return await_(page);
}

// From the lobby to the first decision, by keyboard: the form's fields are passed with Tab.
export async function sitDown(page, address, game) {
  await page.goto(`${address}&game=${game}`);
  await page.waitForSelector(".lobby form");
  await page.evaluate(() => localStorage.setItem("tamarin-pace", "at once"));
  for (let i = 0; i < 30; ++i) {
    const onIt = await page.evaluate(() => document.activeElement?.textContent?.trim() === "Sit down");
    if (onIt) break;
    await page.keyboard.press("Tab");
  }
  await page.keyboard.press("Enter");
  return await_(page);
}

// There is room for so many tables and no more.
export async function leave(page) {
  await page.locator("button", {hasText: "Leave the table"}).click();
  await page.waitForSelector(".lobby form");
}
