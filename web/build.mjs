// Builds the page: web/src into web/built, which the program takes in. Run by scripts/build-page.sh.
//
//   node build.mjs FOLDER
import {copyFileSync, mkdirSync} from "node:fs";
import {build} from "esbuild";

const folder = process.argv[2];
if (!folder) throw new Error("usage: node build.mjs FOLDER");
mkdirSync(folder, {recursive: true});
await build({
  entryPoints: {page: "src/main.tsx"},
  outdir: folder,
  bundle: true,
  format: "esm",
  minify: true,
  target: ["es2021", "chrome100", "firefox100", "safari15"],
  jsx: "automatic",
  jsxImportSource: "preact",
  legalComments: "inline",
  charset: "utf8",
});
for (const file of ["index.html", "icon.svg"]) copyFileSync(`src/${file}`, `${folder}/${file}`);
