// Sitting down, and playing.
import {useCallback, useEffect, useMemo, useRef, useState} from "preact/hooks";
import {Felt} from "./felt";
import {keep, kept, sitsAt, tableOfTab, usePageKeys} from "./page";
import {chipText, gameTitle, lastWords, roundName, signed, stepOf} from "./step";
import {arrival, ask, TableLine, type GameInfo, type Hand, type OpenTable, type TableNews} from "./wire";

const firstGames = ["kuhn.limit.3p.game", "holdem.limit.2p.reverse_blinds.game", "holdem.limit.3p.game", "holdem.nolimit.2p.reverse_blinds.game"];

function orderOf(game: string): number {
  const place = firstGames.indexOf(game);
  return place < 0 ? firstGames.length : place;
}

export function Play() {
  const [sitting, setSitting] = useState<object | null>(() => {
    const table = tableOfTab();
    return table === null ? null : {type: "back", table};
  });
  const leave = () => {
    sitsAt(null);
    setSitting(null);
  };
  if (sitting) return <Table first={sitting} leave={leave} />;
  return <Lobby sit={setSitting} />;
}

function Lobby({sit}: {sit: (first: object) => void}) {
  const [games, setGames] = useState<GameInfo[] | null>(null);
  const [tables, setTables] = useState<OpenTable[]>([]);
  const [problem, setProblem] = useState("");
  const [chosen, setChosen] = useState(arrival.game || (kept("game") ?? ""));
  const [opponents, setOpponents] = useState<string[]>([]);
  useEffect(() => {
    ask<{games: GameInfo[]}>("games")
      .then(({games: list}) => setGames(list.sort((a, b) => orderOf(a.game) - orderOf(b.game) || a.game.localeCompare(b.game))))
      .catch((error: Error) => setProblem(error.message));
    ask<OpenTable[]>("tables").then((list) => setTables(list.filter((table) => table.phase !== "over")), () => {});
  }, []);
  const game = games?.find((one) => one.game === chosen) ?? games?.[0];
  useEffect(() => {
    if (!game) return;
    const able = game.opponents.filter((one) => !one.missing).map((one) => one.name);
    const wanted = ["player", "rule", "random"].filter((name) => able.includes(name));
    setOpponents(Array.from({length: game.seats - 1}, (_, i) => wanted[i % wanted.length] ?? able[0] ?? ""));
  }, [game]);
  if (problem) return <p class="problem" role="alert">{problem}</p>;
  if (!games || !game) return <p class="soft">Looking what there is to play…</p>;
  const begin = (event: Event) => {
    event.preventDefault();
    keep("game", game.game);
    sit({type: "sit", game: game.game, opponents});
  };
  return (
    <div class="lobby">
      {tables.length > 0 && (
        <section class="panel" aria-labelledby="open-tables">
          <h2 id="open-tables">Open tables</h2>
          <ul class="tables">
            {tables.map((table) => (
              <li key={table.table}>
                <button class="primary" onClick={() => sit({type: "back", table: table.table})}>
                  Take it up again
                </button>
                <span>
                  {gameTitle(table.game)}, with {table.players.slice(1).join(" and ")}; {table.hands} {table.hands === 1 ? "hand" : "hands"} played
                </span>
              </li>
            ))}
          </ul>
        </section>
      )}
      <form class="panel" onSubmit={begin} aria-labelledby="new-table">
        <h2 id="new-table">A new table</h2>
        <label class="field">
          <span>Game</span>
          <select value={game.game} onChange={(event) => setChosen(event.currentTarget.value)}>
            {games.map((one) => (
              <option key={one.game} value={one.game}>
                {gameTitle(one.game)} ({one.game.replace(/\.game$/, "")})
              </option>
            ))}
          </select>
        </label>
        {opponents.map((name, i) => (
          <label class="field" key={i}>
            <span>{opponents.length > 1 ? `Opponent ${i + 1}` : "Opponent"}</span>
            <select value={name} onChange={(event) => setOpponents(opponents.map((old, j) => (i === j ? event.currentTarget.value : old)))}>
              {game.opponents.map((one) => (
                <option key={one.name} value={one.name} disabled={one.missing !== ""}>
                  {one.name}: {one.description}
                </option>
              ))}
            </select>
          </label>
        ))}
        {game.opponents.filter((one) => one.missing).map((one) => (
          <p class="soft" key={one.name}>
            <b>{one.name}</b> cannot sit down: {one.missing}
          </p>
        ))}
        <button class="primary big" type="submit" autofocus>
          Sit down
        </button>
      </form>
    </div>
  );
}

const paces = {calm: 700, quick: 250, "at once": 0};
type Pace = keyof typeof paces;

// Which of a hand's actions have been shown: the others are shown one by one.
function useShown(hand: Hand | null, pace: number): [number, () => void] {
  const [shown, setShown] = useState({hand: -1, count: 0});
  const total = hand?.actions.length ?? 0;
  const known = hand !== null && shown.hand === hand.hand;
  // A page that has just come takes the hand as it stands; a hand that begins is shown from its
  // first action.
  const count = hand === null ? 0 : known ? Math.min(shown.count, total) : shown.hand < 0 ? total : 0;
  useEffect(() => {
    if (!hand) return;
    if (!known) {
      setShown({hand: hand.hand, count});
      return;
    }
    if (count >= total) return;
    const own = hand.actions[count]?.seat === hand.you;
    const timer = window.setTimeout(() => setShown({hand: hand.hand, count: count + 1}), own ? 0 : pace);
    return () => window.clearTimeout(timer);
  });
  const skip = useCallback(() => hand && setShown({hand: hand.hand, count: hand.actions.length}), [hand]);
  return [pace === 0 ? total : count, skip];
}

function Table({first, leave}: {first: object; leave: () => void}) {
  const [news, setNews] = useState<TableNews | null>(null);
  const [problem, setProblem] = useState("");
  const [up, setUp] = useState(true);
  const [auto, setAuto] = useState(kept("auto") === "yes");
  const [pace, setPace] = useState<Pace>((kept("pace") as Pace) in paces ? (kept("pace") as Pace) : "calm");
  const line = useRef<TableLine | null>(null);
  useEffect(() => {
    const opened = new TableLine(
      first,
      (message) => {
        if (message.type === "refused") {
          setProblem(message.problem);
        } else {
          setProblem("");
          sitsAt(message.table);
          setNews((old) => (old && old.table === message.table && old.version > message.version ? old : message));
        }
      },
      setUp,
    );
    line.current = opened;
    return () => opened.close();
  }, [first]);
  const hand = news?.hand ?? null;
  const [count, skip] = useShown(hand, paces[pace]);
  const caughtUp = hand !== null && count >= hand.actions.length;
  const turn = caughtUp && news?.phase === "playing" && hand.options !== null;
  const between = caughtUp && news?.phase === "between";
  const next = useCallback(() => {
    if (between && hand) line.current?.say({type: "next", hand: hand.hand});
  }, [between, hand]);
  useEffect(() => {
    if (!auto || !between) return;
    const timer = window.setTimeout(next, paces[pace] * 4 + 400);
    return () => window.clearTimeout(timer);
  }, [auto, between, next, pace]);
  const act = useCallback(
    (action: "f" | "c" | "r", size?: number) => {
      if (!turn || !hand) return;
      const message = {type: "act", hand: hand.hand, actions: hand.actions.length, action};
      line.current?.say(action === "r" && !news?.limit ? {...message, size} : message);
    },
    [turn, hand, news],
  );
  const chooseAuto = (on: boolean) => {
    keep("auto", on ? "yes" : "no");
    setAuto(on);
  };
  const end = () => {
    line.current?.say({type: "leave"});
    window.setTimeout(leave, 100);
  };
  usePageKeys(
    (key) => {
      if (key === "n" || key === " " || key === "Enter") {
        if (!caughtUp) skip();
        else if (between) next();
        else return false;
        return true;
      }
      if (key === "a") chooseAuto(!auto);
      else return false;
      return true;
    },
  );
  const words = hand ? lastWords(hand, count) : "";
  const step = hand ? stepOf(hand, count) : null;
  if (!news) {
    return (
      <div class="panel">
        <p role="status">
          {problem || (up ? "The others are sitting down…" : "No connection to tamarin serve; trying again. When it has been started anew, open the address that it has printed now.")}
        </p>
        {(problem || !up) && <button onClick={leave}>Back</button>}
      </div>
    );
  }
  const over = news.phase === "over";
  return (
    <div class="playing">
      {!up && <p class="problem" role="status">The connection is lost; trying again. The hand waits.</p>}
      {problem && <p class="problem" role="alert">{problem}</p>}
      {news.notice && <p class="problem" role="status">{news.notice}</p>}
      {hand && step ? (
        <Felt hand={hand} count={count} title={`Hand ${news.session.hands + (hand.result ? 0 : 1)} \u00b7 ${roundName(hand, step.round, roundsOf(news.game, hand))}`} />
      ) : (
        <div class="felt waiting">
          <p>{over ? "The table is closed." : "The others are sitting down…"}</p>
        </div>
      )}
      <p class="live" aria-live="polite">
        {hand && caughtUp && hand.result && hand.you !== null ? `${words}. You ${(hand.result[hand.you] ?? 0) >= 0 ? "win" : "lose"} ${chipText(Math.abs(hand.result[hand.you] ?? 0))}.` : words || "\u00a0"}
      </p>
      <div class="controls" data-phase={caughtUp ? news.phase : "showing"} data-hand={hand?.hand ?? ""} data-actions={hand?.actions.length ?? 0} data-turn={turn ? "yes" : "no"}>
        {over ? (
          <div class="row">
            <span>{news.problem || "The match is over."}</span>
            <button class="primary" onClick={leave}>
              To the tables
            </button>
          </div>
        ) : turn && hand?.options && step ? (
          <Choices key={`${hand.hand}/${hand.actions.length}`} hand={hand} limit={news.limit} bigBlind={news.bigBlind} pot={step.pot} act={act} />
        ) : between ? (
          <div class="row">
            <button class="primary big" onClick={next}>
              Next hand <kbd>N</kbd>
            </button>
          </div>
        ) : (
          <div class="row">
            <span class="soft">{caughtUp ? "Waiting for the others" : "\u00a0"}</span>
          </div>
        )}
      </div>
      <div class="below">
        <Session news={news} />
        <div class="panel slim">
          <label class="check">
            <input type="checkbox" checked={auto} onChange={(event) => chooseAuto(event.currentTarget.checked)} />
            <span>
              Deal on by itself <kbd>A</kbd>
            </span>
          </label>
          <label class="field inline">
            <span>Pace</span>
            <select
              value={pace}
              onChange={(event) => {
                const chosen = event.currentTarget.value as Pace;
                keep("pace", chosen);
                setPace(chosen);
              }}
            >
              {Object.keys(paces).map((name) => (
                <option key={name} value={name}>
                  {name}
                </option>
              ))}
            </select>
          </label>
          <button onClick={leave}>Other tables</button>
          <button onClick={end}>Leave the table</button>
        </div>
      </div>
    </div>
  );
}

function roundsOf(game: string, hand: Hand): number {
  return game.startsWith("holdem") ? 4 : game.startsWith("kuhn") ? 1 : Math.max(2, hand.board.length);
}

function Session({news}: {news: TableNews}) {
  const {hands, chips, perHand} = news.session;
  const blind = news.bigBlind > 0;
  const factor = blind ? 1000 / news.bigBlind : 1;
  const figure = (value: number) => (value * factor).toFixed(blind ? 0 : 3);
  return (
    <dl class="panel slim figures">
      <div>
        <dt>Hands</dt>
        <dd id="session-hands">{chipText(hands)}</dd>
      </div>
      <div>
        <dt>Chips</dt>
        <dd id="session-chips" class={chips > 0 ? "gain" : chips < 0 ? "loss" : ""} data-chips={chips}>
          {signed(chips)}
        </dd>
      </div>
      <div>
        <dt title="with the interval that holds the true mean 95 times in 100">{blind ? "mbb a hand" : "chips a hand"}</dt>
        <dd>{perHand ? `${figure(perHand.mean)}${perHand.halfWidth === null ? "" : ` \u00b1 ${figure(perHand.halfWidth)}`}` : "\u2013"}</dd>
      </div>
      <div>
        <dt>Log</dt>
        <dd>
          <a href={`#/review/${encodeURIComponent(news.log)}`}>{news.log}</a>
        </dd>
      </div>
    </dl>
  );
}

interface ChoicesProps {
  hand: Hand;
  limit: boolean;
  bigBlind: number;
  pot: number;
  act: (action: "f" | "c" | "r", size?: number) => void;
}

function Choices({hand, limit, bigBlind, pot, act}: ChoicesProps) {
  const options = hand.options!;
  const you = hand.you ?? 0;
  const spent = stepOf(hand, hand.actions.length).spent;
  const raise = options.raise;
  const sized = raise !== null && !limit && raise.max > raise.min;
  const [size, setSize] = useState(raise?.min ?? 0);
  const field = useRef<HTMLInputElement>(null);
  // A raise by a share of what the pot will be after a call.
  const places = useMemo(() => {
    if (!sized || !raise) return [];
    const called = Math.max(...spent);
    const share = (part: number) => Math.min(raise.max, Math.max(raise.min, Math.round(called + part * (pot + options.owed))));
    const wanted: [string, number][] = [["least", raise.min], ["\u00bd pot", share(0.5)], ["\u00be pot", share(0.75)], ["pot", share(1)], ["2 pots", share(2)], ["all in", raise.max]];
    return wanted;
  }, [sized, raise, pot]);
  const bet = options.owed === 0;
  const legal = raise !== null && Number.isInteger(size) && size >= raise.min && size <= raise.max;
  const doRaise = () => raise && (sized ? legal && act("r", size) : act("r", raise.min));
  usePageKeys(
    (key) => {
      if (key === "f" && options.fold) act("f");
      else if (key === "c" || key === "k") act("c");
      else if (key === "r" || key === "b") {
        if (sized) {
          field.current?.focus();
          field.current?.select();
        } else doRaise();
      } else if (sized && /^[1-6]$/.test(key)) {
        setSize(places[Number(key) - 1]?.[1] ?? size);
        field.current?.focus();
      } else return false;
      return true;
    },
  );
  return (
    <div class="choices">
      {sized && raise && (
        <fieldset class="sizing">
          <legend class="sr">Size of the raise</legend>
          <div class="places">
            {places.map(([name, value], i) => (
              <button key={name} type="button" class={value === size ? "chosen" : ""} aria-pressed={value === size} onClick={() => setSize(value)}>
                {name} <kbd>{i + 1}</kbd>
              </button>
            ))}
          </div>
          <div class="amount">
            <input
              type="range"
              aria-label="Raise to"
              min={0}
              max={1000}
              value={placeOf(size, raise.min, raise.max)}
              aria-valuetext={`${chipText(size)} chips`}
              onInput={(event) => setSize(sizeAt(Number(event.currentTarget.value), raise.min, raise.max, bigBlind))}
            />
            <input
              ref={field}
              type="number"
              inputMode="numeric"
              aria-label="Raise to, in chips"
              min={raise.min}
              max={raise.max}
              step={1}
              value={size}
              onInput={(event) => setSize(event.currentTarget.valueAsNumber)}
              onKeyDown={(event) => {
                if (event.key === "Enter") {
                  event.preventDefault();
                  doRaise();
                } else if (event.key === "Escape") event.currentTarget.blur();
              }}
            />
          </div>
        </fieldset>
      )}
      <div class="row actions">
        <button class="fold" disabled={!options.fold} onClick={() => act("f")}>
          Fold <kbd>F</kbd>
        </button>
        <button class="call" onClick={() => act("c")}>
          {options.owed > 0 ? `Call ${chipText(options.owed)}` : "Check"} <kbd>C</kbd>
        </button>
        <button class="raise" disabled={raise === null || (sized && !legal)} onClick={doRaise}>
          {raise === null ? "No raise" : `${bet ? "Bet" : "Raise"} to ${sized ? (legal ? chipText(size) : "\u2026") : chipText(raise.min)}`} <kbd>R</kbd>
        </button>
      </div>
      <p class="soft hint">
        You have put in {chipText(spent[you] ?? 0)}
        {sized && raise && (legal ? `; to ${chipText(size)} is ${((size - Math.max(...spent)) / (pot + options.owed)).toFixed(2)} of the pot` : `; a raise is to ${chipText(raise.min)} up to ${chipText(raise.max)}`)}
      </p>
    </div>
  );
}

// The slider goes by ratio: as far from 100 to 200 as from 1,000 to 2,000.
function placeOf(size: number, min: number, max: number): number {
  return Math.round((1000 * Math.log(Math.max(size || min, min) / min)) / Math.log(max / min));
}
function sizeAt(place: number, min: number, max: number, unit: number): number {
  const exact = min * Math.pow(max / min, place / 1000);
  const whole = unit >= 2 ? Math.round(exact / (unit / 2)) * (unit / 2) : exact;
  return place >= 1000 ? max : Math.round(Math.min(max, Math.max(min, whole)));
}
