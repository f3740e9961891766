// The page in a real browser: hands played by keyboard alone against the log, a tab that dies in a
// hand, narrow and dark pages, and what axe finds. Run by scripts/browser-tests.
import assert from "node:assert/strict";
import {readFileSync, readdirSync} from "node:fs";
import {join} from "node:path";
import {after, before, describe, test} from "node:test";
import {awaitAfter, await_, browse, leave, serve, sitDown, tree} from "./browser.mjs";

const directory = process.env.TAMARIN_DIRECTORY;
const hands = Number(process.env.HANDS ?? 20);
const games = ["kuhn.limit.3p.game", "holdem.limit.2p.reverse_blinds.game", "holdem.limit.3p.game", "holdem.nolimit.2p.reverse_blinds.game"];
let server;
before(async () => {
  server = await serve(directory);
});
after(() => server.stop());

function logOf(game) {
  const stem = game.replace(/\.game$/, "");
  const folder = join(directory, "logs");
  const numbers = readdirSync(folder)
    .filter((name) => name.startsWith(`${stem}.browser.`))
    .map((name) => Number(name.split(".").at(-2)));
  return readFileSync(join(folder, `${stem}.browser.${Math.max(...numbers)}.log`), "utf8");
}

// Chips by name, and the sum of every hand.
function chipsIn(log) {
  const totals = {};
  const lines = log.split("\n").filter((line) => line.startsWith("STATE:"));
  for (const line of lines) {
    const parts = line.split(":");
    const chips = parts.at(-2).split("|").map(Number);
    const names = parts.at(-1).split("|");
    assert.equal(chips.reduce((sum, one) => sum + one, 0), 0, line);
    names.forEach((name, seat) => (totals[name] = (totals[name] ?? 0) + chips[seat]));
  }
  return {hands: lines.length, totals};
}

describe("hands by keyboard alone", () => {
  for (const game of games)
    test(game, async () => {
      const {page, close} = await browse();
      const problems = [];
      page.on("pageerror", (error) => problems.push(error.message));
      page.on("console", (message) => message.type() === "error" && problems.push(message.text()));
      let at = await sitDown(page, server.address, game);
      let turns = 0;
      for (let played = 0; ; ) {
        if (at.phase === "between") {
          if (++played === hands) break;
          await page.keyboard.press("n");
        } else {
          assert.equal(at.phase, "turn");
          // Now and then a fold or a raise; in no-limit, to a size of three kinds.
          const what = turns++ % 5;
          const fold = what === 4 && (await page.locator("button.fold").isEnabled());
          const raise = what === 1 && (await page.locator("button.raise").isEnabled());
          if (fold) await page.keyboard.press("f");
          else if (raise) {
            await page.keyboard.press("r");
            if (await page.locator("input[type=number]").count()) {
              if (turns % 3 === 0) {
                await page.keyboard.press("Escape");
                await page.keyboard.press("2");
              }
              await page.keyboard.press("Enter");
            }
          } else await page.keyboard.press("c");
        }
        at = await awaitAfter(page, at.key);
      }
      const shown = Number(await page.locator("#session-chips").getAttribute("data-chips"));
      assert.equal(await page.locator("#session-hands").textContent(), String(hands));
      const log = chipsIn(logOf(game));
      assert.equal(log.hands, hands);
      assert.equal(log.totals.you, shown);
      assert.deepEqual(problems, []);
      await leave(page);
      await close();
    });
});

test("a tab that dies in a hand, and another that takes it up", async () => {
  const first = await browse();
  await sitDown(first.page, server.address, "holdem.nolimit.2p.reverse_blinds.game");
  let at = await await_(first.page);
  while (at.phase === "between") {
    await first.page.keyboard.press("n");
    at = await awaitAfter(first.page, at.key);
  }
  const cards = await first.page.locator(".seat.own .card").evaluateAll((all) => all.map((card) => card.getAttribute("aria-label")));
  assert.equal(cards.length, 2);
  await first.close();
  const second = await browse();
  await second.page.goto(server.address);
  // The newest table is the first of the list.
  await second.page.locator("button", {hasText: "Take it up again"}).first().click();
  const again = await await_(second.page);
  assert.equal(again.key, at.key);
  assert.deepEqual(await second.page.locator(".seat.own .card").evaluateAll((all) => all.map((card) => card.getAttribute("aria-label"))), cards);
  await second.page.keyboard.press("c");
  assert.notEqual((await awaitAfter(second.page, again.key)).key, again.key);
  await leave(second.page);
  await second.close();
});

test("a page that is loaded anew sits where it sat", async () => {
  const {page, close} = await browse();
  const at = await sitDown(page, server.address, "kuhn.limit.3p.game");
  await page.reload();
  assert.equal((await await_(page)).key, at.key);
  await page.keyboard.press("h");
  await page.waitForSelector(".list a");
  await page.keyboard.press("g");
  assert.equal((await await_(page)).key, at.key);
  await leave(page);
  await page.reload();
  await page.waitForSelector(".lobby form");
  await close();
});

test("keys are listed on ?", async () => {
  const {page, close} = await browse();
  await page.goto(server.address);
  await page.waitForSelector(".lobby form");
  await page.keyboard.press("?");
  await page.waitForSelector("dialog[open]");
  assert.match(await page.locator("dialog").textContent(), /fold/);
  await page.keyboard.press("Escape");
  await page.waitForSelector("dialog", {state: "detached"});
  await close();
});

test("a page without its token says so and asks nothing", async () => {
  const {page, close} = await browse();
  const asked = [];
  page.on("request", (request) => asked.push(new URL(request.url()).pathname));
  await page.goto(server.address.split("#")[0]);
  assert.match(await page.locator("main").textContent(), /whole address/);
  assert.ok(asked.every((path) => !path.startsWith("/api/")), asked.join());
  await close();
});

test("nothing is fetched from elsewhere, and the first paint is soon", async () => {
  const {page, close} = await browse();
  const asked = [];
  page.on("request", (request) => asked.push(new URL(request.url()).host));
  await page.goto(server.address);
  await page.waitForSelector(".lobby form");
  const own = new URL(server.address).host;
  assert.deepEqual([...new Set(asked)], [own]);
  const paint = await page.evaluate(() => performance.getEntriesByName("first-contentful-paint")[0]?.startTime);
  console.log(`first contentful paint after ${Math.round(paint)} ms`);
  assert.ok(paint < Number(process.env.PAINT_LIMIT ?? 1500), `${paint} ms`);
  await close();
});

// Every kind of page, in both colours and narrow.
const axe = readFileSync(join(tree, "web/node_modules/axe-core/axe.min.js"), "utf8");
async function violations(page) {
  await page.evaluate(axe);
  const found = await page.evaluate(() => globalThis.axe.run(document, {runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "best-practice"]}));
  return found.violations.map((one) => `${one.id}: ${one.nodes.map((node) => `${node.target} ${node.failureSummary}`).join("; ")}`);
}
async function checkPage(page, what) {
  assert.deepEqual(await violations(page), [], what);
  const wide = await page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);
  assert.ok(wide <= 0, `${what}: ${wide} pixels too wide`);
}

for (const [name, options] of [
  ["light", {colorScheme: "light"}],
  ["dark", {colorScheme: "dark"}],
  ["380 pixels wide", {colorScheme: "light", viewport: {width: 380, height: 800}}],
])
  test(`pages, ${name}`, async () => {
    // Scripts of axe's are let in; what the page's own policy forbids is told by the other tests.
    const {page, close} = await browse({...options, bypassCSP: true, reducedMotion: "reduce"});
    await page.goto(server.address);
    await page.waitForSelector(".lobby form");
    await checkPage(page, "lobby");
    for (const game of games) {
      // From elsewhere, so that the page is loaded with its new address.
      await page.goto("about:blank");
      let at = await sitDown(page, server.address, game);
      await checkPage(page, game);
      // Three hands of Kuhn poker, so that there is a log to look at.
      for (let finished = 0; finished < (game.startsWith("kuhn") ? 3 : 1); finished += at.phase === "between") {
        await page.keyboard.press(at.phase === "turn" ? "c" : "n");
        at = await awaitAfter(page, at.key);
      }
      await checkPage(page, game + ", between hands");
      await leave(page);
    }
    await page.keyboard.press("h");
    await page.waitForSelector(".list a");
    await checkPage(page, "logs");
    await page.locator(".list a", {hasText: "kuhn"}).last().click();
    await page.waitForSelector(".hands a");
    await page.waitForSelector(".chart canvas");
    await checkPage(page, "a log");
    await page.locator(".hands a").first().click();
    await page.waitForSelector(".story");
    await page.keyboard.press("End");
    await checkPage(page, "a replay");
    await page.keyboard.press("s");
    await page.waitForSelector("main .panel");
    await checkPage(page, "strategies");
    for (const strategy of ["kuhn.limit.3p.game", "holdem.limit.2p.reverse_blinds.game"]) {
      if (await page.locator(`option[value="${strategy}"]:not([disabled])`).count()) {
        await page.locator("main select").selectOption(strategy);
        await page.waitForSelector(strategy.startsWith("kuhn") ? ".branch" : ".grid");
        if (strategy.startsWith("holdem")) {
          await page.locator('[role="gridcell"]').first().focus();
          await page.keyboard.press("ArrowRight");
          await page.keyboard.press("ArrowDown");
          await page.keyboard.press("Enter");
          assert.equal(await page.locator(".opened h3").textContent(), "KK");
          assert.equal(await page.locator(".opened tbody tr").count(), 6);
        }
        await checkPage(page, strategy);
      }
    }
    await close();
  });
