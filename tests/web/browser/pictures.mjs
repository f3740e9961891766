// The pictures of docs/browser.md, from a real browser. Run by scripts/browser-pictures.
import {mkdirSync} from "node:fs";
import {join} from "node:path";
import {awaitAfter, browse, serve, sitDown, tree} from "./browser.mjs";

const folder = join(tree, "docs/pictures");
mkdirSync(folder, {recursive: true});
const server = await serve(process.env.TAMARIN_DIRECTORY);
const {page, close} = await browse({viewport: {width: 900, height: 800}, reducedMotion: "reduce", colorScheme: "light"});
const picture = (name) => page.screenshot({path: join(folder, `${name}.png`)});

let at = await sitDown(page, server.address, "holdem.nolimit.2p.reverse_blinds.game");
// On to a decision with at least four cards on the board.
for (let i = 0; i < 200; ++i) {
  if (at.phase === "turn" && (await page.locator(".board .card").count()) === 4) break;
  await page.keyboard.press(at.phase === "between" ? "n" : "c");
  at = await awaitAfter(page, at.key);
}
await page.keyboard.press("3");
await page.evaluate(() => document.activeElement.blur());
await picture("table");
while (at.phase !== "between") {
  await page.keyboard.press("c");
  at = await awaitAfter(page, at.key);
}
await page.locator(".figures a").click();
await page.locator(".hands a").last().click();
await page.waitForSelector(".story");
await page.keyboard.press("End");
await page.waitForTimeout(200);
await picture("replay");
await page.keyboard.press("s");
await page.waitForSelector("main select");
await page.locator("main select").selectOption("holdem.limit.2p.reverse_blinds.game");
await page.waitForSelector(".grid");
await page.locator('[data-cell="3"]').click();
await page.waitForTimeout(200);
await picture("grid");
await close();
await server.stop();
