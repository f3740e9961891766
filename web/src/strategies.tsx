// What strategies do: the whole tree of a small game, and of hold'em a decision at a time.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import {Card} from "./cards";
import {useAnswer} from "./review";
import {gameTitle, roundNames} from "./step";
import type {Grid, StrategyInfo, Tree, TreeNode} from "./wire";

const ranks = "23456789TJQKA";
const suits = "cdhs";
const kinds = ["fold", "call", "raise"];

function actionName(action: number, owes: boolean): string {
  if (action === 0) return "fold";
  if (action === 1) return owes ? "call" : "check";
  return owes ? "raise" : "bet";
}

function percent(share: number): string {
  const value = 100 * share;
  if (share > 0 && value < 0.05) return "<0.1 %";
  return `${value.toFixed(1)} %`;
}

function Bar({shares, words}: {shares: number[]; words?: (action: number) => string}) {
  const text = shares.map((share, a) => `${words ? words(a) : kinds[a]} ${percent(share)}`).filter((_, a) => (shares[a] ?? 0) > 0).join(", ");
  return (
    <span class="bar" role="img" aria-label={text || "nothing"} title={text}>
      {shares.map((share, a) => share > 0.0005 && (
        <i key={a} class={kinds[a]} style={{flexGrow: share}}>
          {share >= 0.14 ? `${Math.round(100 * share)}` : ""}
        </i>
      ))}
    </span>
  );
}

function Legend() {
  return (
    <p class="legend">
      <span><i class="fold" />fold</span>
      <span><i class="call" />check or call</span>
      <span><i class="raise" />bet or raise</span>
    </p>
  );
}

export function Strategies({game}: {game: string}) {
  const [list, problem] = useAnswer<StrategyInfo[]>("strategies", {});
  if (problem) return <p class="problem" role="alert">{problem}</p>;
  if (!list) return <p class="soft">Looking what there is…</p>;
  const there = list.filter((one) => !one.missing);
  const chosen = list.find((one) => one.game === game) ?? there[0];
  return (
    <>
      <section class="panel slim">
        <label class="field inline">
          <span>Strategy of</span>
          <select value={chosen?.game ?? ""} onChange={(event) => (location.hash = `#/strategies/${encodeURIComponent(event.currentTarget.value)}`)}>
            {!chosen && <option value="">none yet</option>}
            {list.map((one) => (
              <option key={one.game} value={one.game} disabled={one.missing !== ""}>
                {gameTitle(one.game)} ({one.game.replace(/\.game$/, "")}){one.missing ? ": none yet" : ""}
              </option>
            ))}
          </select>
        </label>
        {there.length === 0 && <p class="soft">There is no strategy in this playing directory yet: {list[0]?.missing}</p>}
      </section>
      {chosen && chosen.missing && <p class="problem">{chosen.missing}</p>}
      {chosen && !chosen.missing && (chosen.kind === "tree" ? <WholeTree key={chosen.game} game={chosen.game} /> : <Decisions key={chosen.game} game={chosen.game} />)}
    </>
  );
}

// Whether the seat to act at a node owes something: it may fold then and only then.
const owesAt = (node: TreeNode) => node.next[0] !== null;

function WholeTree({game}: {game: string}) {
  const [tree, problem] = useAnswer<Tree>("tree", {game});
  const [path, setPath] = useState<number[]>([]); // the nodes after the first
  if (problem) return <p class="problem" role="alert">{problem}</p>;
  if (!tree) return <p class="soft">Reading…</p>;
  const at = tree.nodes[path[path.length - 1] ?? 0];
  if (!at) return null;
  return (
    <>
      <section class="panel" aria-labelledby="worth">
        <h2 id="worth">{gameTitle(tree.game)}</h2>
        <div class="scroll" tabIndex={0} role="region" aria-label="What the seats win">
          <table>
            <thead>
              <tr>
                <th scope="col">Seat</th>
                <th scope="col" class="number">Value</th>
                <th scope="col" class="number">Best response</th>
                <th scope="col" class="number">Gain</th>
              </tr>
            </thead>
            <tbody>
              {tree.value.map((value, seat) => (
                <tr key={seat}>
                  <th scope="row">seat {seat}</th>
                  <td class="number">{value.toFixed(6)}</td>
                  <td class="number">{(tree.best[seat] ?? 0).toFixed(6)}</td>
                  <td class="number">{((tree.best[seat] ?? 0) - value).toExponential(1)}</td>
                </tr>
              ))}
            </tbody>
          </table>
        </div>
        <p class="soft">Chips a hand. NashConv {tree.nashConv.toExponential(2)}: what the seats could gain by a best response, added up.</p>
      </section>
      <section class="panel" aria-labelledby="decision">
        <h2 id="decision">A decision</h2>
        <nav class="crumbs" aria-label="The betting so far">
          <button onClick={() => setPath([])} aria-current={path.length === 0 ? "page" : undefined}>start</button>
          {path.map((n, i) => {
            const before = tree.nodes[path[i - 1] ?? 0]!;
            return (
              <button key={i} onClick={() => setPath(path.slice(0, i + 1))} aria-current={i + 1 === path.length ? "page" : undefined}>
                seat {before.seat} {actionName(before.next.indexOf(n), owesAt(before))}s
              </button>
            );
          })}
        </nav>
        <Legend />
        <NodeSets node={at} />
        <div class="row">
          {at.next.map((next, a) => next !== null && (
            <button key={a} class={kinds[a]} disabled={next < 0} onClick={() => setPath([...path, next])}>
              seat {at.seat} {actionName(a, owesAt(at))}s{next < 0 ? ", which ends it" : ""}
            </button>
          ))}
        </div>
        {at.next.map((next, a) => next !== null && next < 0 && <End key={a} tree={tree} end={-1 - next} name={`${actionName(a, owesAt(at))}`} />)}
      </section>
      <section class="panel" aria-labelledby="tree">
        <h2 id="tree">The whole tree</h2>
        <TreeBranch tree={tree} node={0} line="start" />
      </section>
    </>
  );
}

function NodeSets({node}: {node: TreeNode}) {
  return (
    <table class="sets">
      <caption class="sr">What seat {node.seat} does with each card</caption>
      <thead class="sr">
        <tr><th scope="col">Card</th><th scope="col">Shares</th><th scope="col">Reached</th></tr>
      </thead>
      <tbody>
        {node.sets.map((set) => (
          <tr key={set.card}>
            <th scope="row">{set.card}</th>
            <td><Bar shares={set.shares} words={(a) => actionName(a, owesAt(node))} /></td>
            <td class="number soft">{percent(set.reach)}</td>
          </tr>
        ))}
      </tbody>
    </table>
  );
}

function End({tree, end, name}: {tree: Tree; end: number; name: string}) {
  const what = tree.ends[end];
  if (!what) return null;
  return (
    <p class="soft end">
      <b>{name}</b> ends {percent(what.reach)} of hands{what.reach > 0 && what.paid.length > 0 ? `, worth ${what.paid.map((paid) => paid.toFixed(3)).join(", ")}` : ""}
    </p>
  );
}

function TreeBranch({tree, node, line}: {tree: Tree; node: number; line: string}) {
  const at = tree.nodes[node]!;
  const [open, setOpen] = useState(tree.nodes.length <= 60 && node < 1);
  return (
    <details open={open} class={`branch seat${at.seat % 3}`} onToggle={(event) => setOpen(event.currentTarget.open)}>
      <summary>
        <b>seat {at.seat}</b> {line} <span class="soft">{percent(at.reach)} of hands</span>
      </summary>
      {open && (
        <>
          <NodeSets node={at} />
          {at.next.map((next, a) => {
            if (next === null) return null;
            const name = `${line === "start" ? "" : line + ", "}${actionName(a, owesAt(at))}`;
            return next < 0 ? <End key={a} tree={tree} end={-1 - next} name={name} /> : <TreeBranch key={a} tree={tree} node={next} line={name} />;
          })}
        </>
      )}
    </details>
  );
}

// Of hold'em: the betting so far and the board it lies on.
interface Place {
  betting: string;
  words: string;
  board: string;
}

function Decisions({game}: {game: string}) {
  const [path, setPath] = useState<Place[]>([{betting: "", words: "start", board: ""}]);
  const at = path[path.length - 1]!;
  const [grid, problem] = useAnswer<Grid>("grid", {game, betting: at.betting, board: at.board});
  const go = (action: number) => {
    const next = grid?.next[action];
    if (!grid || next === null || next === undefined || next === "end") return;
    const deeper = next > grid.round;
    setPath([
      ...path,
      {
        betting: at.betting + "fcr"[action] + (deeper ? "/" : ""),
        words: `seat ${grid.seat} ${actionName(action, grid.owes)}s`,
        board: deeper ? drawnOn(at.board, [0, 3, 4, 5][next] ?? 5) : at.board,
      },
    ]);
  };
  return (
    <section class="panel" aria-labelledby="decision">
      <h2 id="decision">{gameTitle(game)}</h2>
      <nav class="crumbs" aria-label="The betting so far">
        {path.map((place, i) => (
          <button key={i} onClick={() => setPath(path.slice(0, i + 1))} aria-current={i + 1 === path.length ? "page" : undefined}>
            {place.words}
          </button>
        ))}
      </nav>
      {at.board && <BoardField board={at.board} choose={(board) => setPath([...path.slice(0, -1), {...at, board}])} />}
      {problem && <p class="problem" role="alert">{problem}</p>}
      {grid && (
        <>
          <p>
            <b>Seat {grid.seat}</b> is to act, {roundNames[grid.round]?.toLowerCase()}. Ten buckets of alike hands; a cell shows what its hands do together.
          </p>
          <div class="row">
            {grid.next.map((next, a) => next !== null && (
              <button key={a} class={kinds[a]} disabled={next === "end"} onClick={() => go(a)}>
                {actionName(a, grid.owes)} {next === "end" ? "ends it" : "→"}
              </button>
            ))}
          </div>
          <Legend />
          <HandGrid grid={grid} />
        </>
      )}
    </section>
  );
}

// A longer board: the same cards first, then some at random.
function drawnOn(board: string, size: number): string {
  let cards: string[] = board.match(/../g) ?? [];
  while (cards.length < size) {
    const card = ranks[Math.floor(Math.random() * 13)]! + suits[Math.floor(Math.random() * 4)]!;
    if (!cards.includes(card)) cards = [...cards, card];
  }
  return cards.slice(0, size).join("");
}

function BoardField({board, choose}: {board: string; choose: (board: string) => void}) {
  const [text, setText] = useState(board);
  useEffect(() => setText(board), [board]);
  const cards = board.match(/../g) ?? [];
  const submit = (event: Event) => {
    event.preventDefault();
    choose(text.replace(/\s/g, ""));
  };
  return (
    <form class="row boardfield" onSubmit={submit}>
      <span class="cards">{cards.map((card) => <Card key={card} card={card} small />)}</span>
      <label class="field inline">
        <span>Board</span>
        <input value={text} size={12} spellcheck={false} autocomplete="off" onInput={(event) => setText(event.currentTarget.value)} />
      </label>
      <button type="submit">Show</button>
      <button type="button" onClick={() => choose(drawnOn("", cards.length))}>Another board</button>
    </form>
  );
}

interface Holding {
  cards: [string, string];
  bucket: number;
}

// The holdings of every cell, in the order of the server's numbers.
function cellsOf(grid: Grid): Holding[][] {
  const cells: Holding[][] = Array.from({length: 169}, () => []);
  let at = 0;
  for (let high = 1; high < 52; ++high)
    for (let low = 0; low < high; ++low) {
      const bucket = grid.buckets[at++] ?? -1;
      const [a, b] = [12 - (high >> 2), 12 - (low >> 2)]; // rows from the ace down; a <= b
      const suited = (high & 3) === (low & 3);
      const cell = suited ? a * 13 + b : b * 13 + a;
      cells[cell]!.push({cards: [ranks[high >> 2]! + suits[high & 3]!, ranks[low >> 2]! + suits[low & 3]!], bucket});
    }
  return cells;
}

function labelOf(cell: number): string {
  const row = Math.floor(cell / 13);
  const column = cell % 13;
  const name = ranks[12 - Math.min(row, column)]! + ranks[12 - Math.max(row, column)]!;
  return row === column ? name : name + (row < column ? "s" : "o");
}

function HandGrid({grid}: {grid: Grid}) {
  const cells = useMemo(() => cellsOf(grid), [grid]);
  const shares = useMemo(
    () =>
      cells.map((holdings) => {
        const live = holdings.filter((holding) => holding.bucket >= 0);
        const sum = [0, 1, 2].map((a) => live.reduce((total, holding) => total + (grid.shares[holding.bucket]?.[a] ?? 0), 0));
        return live.length ? sum.map((value) => value / live.length) : null;
      }),
    [cells, grid],
  );
  const [focus, setFocus] = useState(0);
  const [opened, setOpened] = useState<number | null>(null);
  const table = useRef<HTMLDivElement>(null);
  const move = (to: number) => {
    setFocus(to);
    table.current?.querySelector<HTMLElement>(`[data-cell="${to}"]`)?.focus();
  };
  const pressed = (event: KeyboardEvent) => {
    const row = Math.floor(focus / 13);
    const column = focus % 13;
    if (event.key === "ArrowRight") move(row * 13 + Math.min(12, column + 1));
    else if (event.key === "ArrowLeft") move(row * 13 + Math.max(0, column - 1));
    else if (event.key === "ArrowDown") move(Math.min(12, row + 1) * 13 + column);
    else if (event.key === "ArrowUp") move(Math.max(0, row - 1) * 13 + column);
    else if (event.key === "Home") move(row * 13);
    else if (event.key === "End") move(row * 13 + 12);
    else if (event.key === "Enter" || event.key === " ") setOpened(focus);
    else return;
    event.preventDefault();
  };
  const words = (part: number[] | null) => (part ? part.map((share, a) => (share > 0.0005 ? `${kinds[a]} ${percent(share)}` : "")).filter(Boolean).join(", ") : "on the board");
  return (
    <div class="gridplace">
      <div class="grid" role="grid" aria-label="Starting hands, suited above the diagonal" ref={table} onKeyDown={pressed}>
        {Array.from({length: 13}, (_, row) => (
          <div role="row" key={row}>
            {Array.from({length: 13}, (_, column) => {
              const cell = row * 13 + column;
              const part = shares[cell] ?? null;
              return (
                <div
                  key={cell}
                  role="gridcell"
                  data-cell={cell}
                  tabIndex={cell === focus ? 0 : -1}
                  aria-selected={cell === opened}
                  aria-label={`${labelOf(cell)}: ${words(part)}`}
                  title={words(part)}
                  onClick={() => {
                    setFocus(cell);
                    setOpened(cell);
                  }}
                >
                  <span class="stack" aria-hidden="true">
                    {part?.map((share, a) => share > 0.0005 && <i key={a} class={kinds[a]} style={{flexGrow: share}} />)}
                  </span>
                  <b aria-hidden="true">{labelOf(cell)}</b>
                </div>
              );
            })}
          </div>
        ))}
      </div>
      <aside class="opened" aria-live="polite">
        {opened === null ? (
          <p class="soft">Choose a cell, or go there with the arrow keys and press Enter, to see its hands one by one.</p>
        ) : (
          <>
            <h3>{labelOf(opened)}</h3>
            <table class="sets">
              <thead>
                <tr><th scope="col">Hand</th><th scope="col">Bucket</th><th scope="col">Shares</th></tr>
              </thead>
              <tbody>
                {cells[opened]!.map((holding) => (
                  <tr key={holding.cards.join("")}>
                    <th scope="row"><span class="cards">{holding.cards.map((card) => <Card key={card} card={card} small />)}</span></th>
                    <td class="number">{holding.bucket < 0 ? "–" : holding.bucket}</td>
                    <td>{holding.bucket < 0 ? <span class="soft">on the board</span> : <Bar shares={grid.shares[holding.bucket] ?? []} words={(a) => actionName(a, grid.owes)} />}</td>
                  </tr>
                ))}
              </tbody>
            </table>
          </>
        )}
      </aside>
    </div>
  );
}
