// Finished hands: the logs, a log's hands, one hand step by step, and how a session went.
import {useEffect, useRef, useState} from "preact/hooks";
import uPlot from "uplot";
import {Cards} from "./cards";
import {Felt} from "./felt";
import {usePageKeys} from "./page";
import {chipText, gameTitle, lastWords, roundName, signed, stepOf} from "./step";
import {ask, type Curve, type Hand, type HandList, type LogInfo} from "./wire";

export function Review({log, number}: {log: string; number: number | null}) {
  if (log && number !== null) return <Replay log={log} number={number} />;
  if (log) return <Log log={log} />;
  return <Logs />;
}

export function useAnswer<T>(question: string, values: Record<string, string | number>): [T | null, string] {
  const [answer, setAnswer] = useState<{key: string; value: T} | null>(null);
  const [problem, setProblem] = useState("");
  const key = question + JSON.stringify(values);
  useEffect(() => {
    let wanted = true;
    setProblem("");
    ask<T>(question, values).then(
      (value) => wanted && setAnswer({key, value}),
      (error: Error) => wanted && setProblem(error.message),
    );
    return () => {
      wanted = false;
    };
  }, [key]);
  return [answer?.key === key ? answer.value : null, problem];
}

function Logs() {
  const [logs, problem] = useAnswer<LogInfo[]>("logs", {});
  if (problem) return <p class="problem" role="alert">{problem}</p>;
  if (!logs) return <p class="soft">Reading…</p>;
  if (logs.length === 0) return <p class="panel">No hands yet. What is played goes into the logs of the playing directory, and is found here.</p>;
  return (
    <section class="panel">
      <h2>Match logs</h2>
      <ul class="list">
        {logs.map((log) => (
          <li key={log.log}>
            <a href={`#/review/${encodeURIComponent(log.log)}`}>{log.log}</a>
            <span class="soft">
              {gameTitle(log.game)}, {Math.max(1, Math.round(log.bytes / 1024)).toLocaleString("en")} kB
            </span>
          </li>
        ))}
      </ul>
    </section>
  );
}

function Log({log}: {log: string}) {
  const [first, setFirst] = useState(0);
  const [list, problem] = useAnswer<HandList>("hands", {log, first});
  if (problem) return <p class="problem" role="alert">{problem}</p>;
  if (!list) return <p class="soft">Reading…</p>;
  const person = list.results.find((result) => result.player === "you")?.player ?? list.results[0]?.player ?? "";
  const unit = list.bigBlind > 0 ? 1000 / list.bigBlind : 1;
  const digits = list.bigBlind > 0 ? 0 : 3;
  return (
    <>
      <nav class="crumbs" aria-label="Where this is">
        <a href="#/review">Match logs</a> <span aria-current="page">{log}</span>
      </nav>
      <section class="panel" aria-labelledby="results">
        <h2 id="results">{gameTitle(list.game)}</h2>
        <div class="scroll" tabIndex={0} role="region" aria-label="Results by player">
          <table>
            <thead>
              <tr>
                <th scope="col">Player</th>
                <th scope="col" class="number">Hands</th>
                <th scope="col" class="number">Chips</th>
                <th scope="col" class="number">{list.bigBlind > 0 ? "mbb a hand" : "Chips a hand"}, 95&nbsp;%</th>
              </tr>
            </thead>
            <tbody>
              {list.results.map((result) => (
                <tr key={result.player}>
                  <th scope="row">{result.player}</th>
                  <td class="number">{chipText(result.hands)}</td>
                  <td class={`number ${result.chips > 0 ? "gain" : result.chips < 0 ? "loss" : ""}`}>{signed(result.chips)}</td>
                  <td class="number">
                    {(result.mean * unit).toFixed(digits)}
                    {result.halfWidth !== null && ` \u00b1 ${(result.halfWidth * unit).toFixed(digits)}`}
                  </td>
                </tr>
              ))}
            </tbody>
          </table>
        </div>
        <Chart log={log} total={list.total} />
      </section>
      <section class="panel" aria-labelledby="hands">
        <h2 id="hands">{chipText(list.total)} {list.total === 1 ? "hand" : "hands"}</h2>
        <ol class="hands" start={list.first + 1}>
          {list.hands.map((hand) => {
            const seat = Math.max(0, hand.names.indexOf(person));
            const chips = hand.chips[seat] ?? 0;
            return (
              <li key={hand.number}>
                <a href={`#/review/${encodeURIComponent(log)}/${hand.number}`}>
                  <span class="soft">{chipText(hand.number + 1)}</span>
                  <Cards cards={hand.cards[seat]} small />
                  <Cards cards={hand.board} small />
                  <b class={chips > 0 ? "gain" : chips < 0 ? "loss" : ""}>{signed(chips)}</b>
                </a>
              </li>
            );
          })}
        </ol>
        {list.total > list.hands.length && (
          <div class="row">
            <button disabled={first === 0} onClick={() => setFirst(Math.max(0, first - 200))}>Earlier</button>
            <button disabled={first + list.hands.length >= list.total} onClick={() => setFirst(first + 200)}>Later</button>
          </div>
        )}
      </section>
    </>
  );
}

function Chart({log, total}: {log: string; total: number}) {
  const [curve] = useAnswer<Curve>("curve", {log});
  const place = useRef<HTMLDivElement>(null);
  useEffect(() => {
    const box = place.current;
    if (!box || !curve || curve.hands.length < 2) return;
    const colour = (name: string) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const axis = {stroke: colour("--ink"), grid: {stroke: colour("--line"), width: 1}, ticks: {show: false}};
    const plot = new uPlot(
      {
        width: box.clientWidth,
        height: 240,
        legend: {show: false},
        cursor: {show: false},
        scales: {x: {time: false}},
        axes: [axis, axis],
        series: [
          {},
          {stroke: "transparent", points: {show: false}},
          {stroke: "transparent", points: {show: false}},
          {stroke: colour("--accent"), width: 2, points: {show: false}},
        ],
        bands: [{series: [1, 2], fill: colour("--band")}],
      },
      [curve.hands, curve.high, curve.low, curve.chips],
      box,
    );
    const resized = new ResizeObserver(() => plot.setSize({width: box.clientWidth, height: 240}));
    resized.observe(box);
    return () => {
      resized.disconnect();
      plot.destroy();
    };
  }, [curve]);
  if (!curve || total < 2) return null;
  const last = curve.chips.length - 1;
  return (
    <figure class="chart">
      <div
        ref={place}
        role="img"
        aria-label={`Chips of ${curve.player} after each hand, at the end ${chipText(curve.chips[last] ?? 0)}; with 95 per cent between ${chipText(Math.round(curve.low[last] ?? 0))} and ${chipText(Math.round(curve.high[last] ?? 0))}`}
      />
      <figcaption class="soft">
        {curve.player === "you" ? "Your chips" : `Chips of ${curve.player}`} after so many hands. The band holds what so many hands would have brought on average, 95 times in 100.
      </figcaption>
    </figure>
  );
}

interface LoggedHand {
  log: string;
  number: number;
  game: string;
  limit: boolean;
  bigBlind: number;
  hand: Hand;
}

function Replay({log, number}: {log: string; number: number}) {
  const [answer, problem] = useAnswer<LoggedHand>("hand", {log, number});
  const [count, setCount] = useState(0);
  const total = answer?.hand.actions.length ?? 0;
  useEffect(() => setCount(0), [log, number]);
  const go = (to: number) => {
    if (to >= 0) location.hash = `#/review/${encodeURIComponent(log)}/${to}`;
  };
  const step = (by: number) => setCount((old) => Math.min(total, Math.max(0, old + by)));
  usePageKeys(
    (key) => {
      if (key === "ArrowRight" || key === "n" || key === " ") step(1);
      else if (key === "ArrowLeft" || key === "p") step(-1);
      else if (key === "Home") setCount(0);
      else if (key === "End") setCount(total);
      else if (key === "PageDown") go(number + 1);
      else if (key === "PageUp") go(number - 1);
      else return false;
      return true;
    },
  );
  const crumbs = (
    <nav class="crumbs" aria-label="Where this is">
      <a href="#/review">Match logs</a> <a href={`#/review/${encodeURIComponent(log)}`}>{log}</a>{" "}
      <span aria-current="page">hand {number + 1}</span>
    </nav>
  );
  if (problem) return <>{crumbs}<p class="problem" role="alert">{problem}</p></>;
  if (!answer) return <>{crumbs}<p class="soft">Reading…</p></>;
  const hand = answer.hand;
  const at = stepOf(hand, count);
  const rounds = hand.made.find((made) => made)?.length ?? 1;
  return (
    <>
      {crumbs}
      <div class="playing">
        <Felt hand={hand} count={count} openAll title={`Hand ${number + 1} \u00b7 ${roundName(hand, at.round, answer.game.startsWith("holdem") ? 4 : rounds)}`} />
        <p class="live" aria-live="polite">{lastWords(hand, count) || "The hand begins"}</p>
        <div class="controls">
          <input type="range" aria-label="Actions shown" min={0} max={total} value={count} onInput={(event) => setCount(Number(event.currentTarget.value))} />
          <div class="row">
            <button onClick={() => go(number - 1)} disabled={number === 0}>
              Hand before <kbd>PgUp</kbd>
            </button>
            <button onClick={() => step(-1)} disabled={count === 0}>
              Back <kbd>←</kbd>
            </button>
            <button class="primary" onClick={() => step(1)} disabled={count === total}>
              Step <kbd>→</kbd>
            </button>
            <button onClick={() => go(number + 1)}>
              Hand after <kbd>PgDn</kbd>
            </button>
          </div>
        </div>
        <ol class="story panel">
          {hand.actions.map((action, i) => (
            <li key={i}>
              <button class={i + 1 === count ? "chosen" : ""} aria-current={i + 1 === count ? "step" : undefined} onClick={() => setCount(i + 1)}>
                {lastWords(hand, i + 1)}
                {hand.actions[i - 1]?.round !== action.round && action.round > 0 && <span class="soft"> ({roundName(hand, action.round, 4).toLowerCase()})</span>}
              </button>
            </li>
          ))}
        </ol>
      </div>
    </>
  );
}
