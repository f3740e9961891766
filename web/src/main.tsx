// The page: where one is, what is shown there, and the keys that work everywhere.
import {render} from "preact";
import {useEffect, useRef, useState} from "preact/hooks";
import {kept, keep, usePageKeys} from "./page";
import {Play} from "./play";
import {Review} from "./review";
import {Strategies} from "./strategies";
import {arrival} from "./wire";
import "uplot/dist/uPlot.min.css";
import "./style.css";

const keys: [string, string][] = [
  ["F", "fold"],
  ["C", "check or call"],
  ["R", "bet or raise; in no-limit, to the field for its size"],
  ["1 to 6", "in no-limit: least, half, three quarters, whole, two pots, all in"],
  ["Enter", "in the field: raise to that size"],
  ["Esc", "leave the field"],
  ["N, space or Enter", "next hand; first, show the rest of this one at once"],
  ["A", "deal on by itself, or not"],
  ["← →", "replay: an action back, an action on"],
  ["Page up, page down", "replay: hand before, hand after"],
  ["arrow keys, Enter", "grid of hands: go, open a cell"],
  ["G, H, S", "go to the game, to the hands, to the strategies"],
  ["?", "this list"],
];

const places = [
  ["play", "Play"],
  ["review", "Hands"],
  ["strategies", "Strategies"],
] as const;

function whereNow(): string[] {
  const path = location.hash.replace(/^#\/?/, "").split("/").map(decodeURIComponent);
  return path[0] ? path : ["play"];
}

const themes = ["as the system", "light", "dark"];

function App() {
  const [where, setWhere] = useState(whereNow);
  const [help, setHelp] = useState(false);
  const [theme, setTheme] = useState(kept("theme") ?? themes[0]!);
  useEffect(() => {
    const moved = () => setWhere(whereNow());
    addEventListener("hashchange", moved);
    return () => removeEventListener("hashchange", moved);
  }, []);
  useEffect(() => {
    keep("theme", theme);
    if (theme === "light" || theme === "dark") document.documentElement.dataset.theme = theme;
    else delete document.documentElement.dataset.theme;
  }, [theme]);
  usePageKeys((key) => {
    if (key === "?") setHelp(true);
    else if (key === "g") location.hash = "#/play";
    else if (key === "h") location.hash = "#/review";
    else if (key === "s") location.hash = "#/strategies";
    else return false;
    return true;
  });
  const [place, first, second] = where;
  if (!arrival.token) {
    return (
      <main class="panel alone">
        <h1>Tamarin</h1>
        <p>This page opens with the whole address that <code>tamarin serve</code> printed, the part behind the # included.</p>
      </main>
    );
  }
  return (
    <>
      <header class="top">
        <h1>Tamarin</h1>
        <nav aria-label="Parts of the page">
          {places.map(([name, title]) => (
            <a key={name} href={`#/${name}`} aria-current={place === name ? "page" : undefined}>
              {title}
            </a>
          ))}
        </nav>
        <label class="theme">
          <span class="sr">Colours</span>
          <select value={theme} onChange={(event) => setTheme(event.currentTarget.value)}>
            {themes.map((name) => (
              <option key={name} value={name}>{name}</option>
            ))}
          </select>
        </label>
        <button onClick={() => setHelp(true)}>
          Keys <kbd>?</kbd>
        </button>
      </header>
      <main>
        {place === "review" ? (
          <Review log={first ?? ""} number={second !== undefined && second !== "" ? Number(second) : null} />
        ) : place === "strategies" ? (
          <Strategies game={first ?? ""} />
        ) : (
          <Play />
        )}
      </main>
      {help && <Help close={() => setHelp(false)} />}
    </>
  );
}

function Help({close}: {close: () => void}) {
  const box = useRef<HTMLDialogElement>(null);
  useEffect(() => box.current?.showModal(), []);
  return (
    <dialog ref={box} onClose={close} aria-labelledby="keys">
      <h2 id="keys">Keys</h2>
      <dl class="keys">
        {keys.map(([key, meaning]) => (
          <div key={key}>
            <dt><kbd>{key}</kbd></dt>
            <dd>{meaning}</dd>
          </div>
        ))}
      </dl>
      <form method="dialog">
        <button class="primary" autofocus>Close</button>
      </form>
    </dialog>
  );
}

render(<App />, document.getElementById("page")!);
