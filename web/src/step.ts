// A hand as it stood after so many of its actions.
import type {Hand} from "./wire";

export interface Step {
  round: number;
  spent: number[]; // by seat, over the whole hand
  bets: number[]; // by seat, in this round
  folded: boolean[];
  pot: number; // all that is in, this round's bets included
  toAct: number | null;
  said: string[]; // by seat: its last action of this round, in words
  end: boolean;
}

export function stepOf(hand: Hand, count: number): Step {
  const next = hand.actions[count];
  const end = next === undefined;
  const round = next ? next.round : hand.round;
  const spent = [...hand.blinds];
  let atStart = hand.blinds.map(() => 0);
  const folded = hand.names.map(() => false);
  const said = hand.names.map(() => "");
  let last = 0;
  const enter = (reached: number) => {
    if (reached === last) return;
    atStart = [...spent];
    said.forEach((_, seat) => (said[seat] = folded[seat] ? "folded" : ""));
    last = reached;
  };
  for (const action of hand.actions.slice(0, count)) {
    enter(action.round);
    said[action.seat] = wordsOf(action.type, spent, action.seat, action.to, hand.stacks);
    spent[action.seat] = action.to;
    if (action.type === "f") folded[action.seat] = true;
  }
  // A finished hand keeps its last words.
  if (!(end && hand.result)) enter(round);
  return {
    round,
    spent,
    bets: spent.map((chips, seat) => (end && hand.result ? 0 : chips - (atStart[seat] ?? 0))),
    folded,
    pot: spent.reduce((sum, chips) => sum + chips, 0),
    toAct: next ? next.seat : hand.toAct,
    said,
    end,
  };
}

function wordsOf(type: string, spent: number[], seat: number, to: number, stacks: (number | null)[]): string {
  const owed = Math.max(...spent) - (spent[seat] ?? 0);
  const all = stacks[seat] === to ? ", all in" : "";
  if (type === "f") return "folds";
  if (type === "c") return owed > 0 ? `calls ${to - (spent[seat] ?? 0)}${all}` : "checks";
  return `${owed > 0 ? "raises" : "bets"} to ${to}${all}`;
}

// "rule raises to 40", of the action that led to this step.
export function lastWords(hand: Hand, count: number): string {
  const action = hand.actions[count - 1];
  if (!action) return "";
  const before = stepOf(hand, count - 1);
  const words = wordsOf(action.type, before.spent, action.seat, action.to, hand.stacks);
  const name = hand.names[action.seat] ?? "";
  return name === "you" ? `you ${words.replace(/^(\w+?)s\b/, "$1")}` : `${name} ${words}`;
}

export const roundNames = ["Pre-flop", "Flop", "Turn", "River"];

export function roundName(hand: {board: string[][]}, round: number, rounds: number): string {
  if (rounds === 1) return "Betting";
  return hand.board.length && rounds === 4 ? (roundNames[round] ?? "") : `Round ${round + 1}`;
}

export function chipText(chips: number): string {
  return Number.isInteger(chips) ? chips.toLocaleString("en") : chips.toLocaleString("en", {maximumFractionDigits: 2});
}

export function signed(chips: number): string {
  return (chips > 0 ? "+" : chips < 0 ? "\u2212" : "\u00b1") + chipText(Math.abs(chips));
}

export function gameTitle(game: string): string {
  const name = game.replace(/\.game$/, "");
  const kind = name.startsWith("kuhn") ? "Kuhn poker" : name.startsWith("holdem") ? "Texas hold\u2019em" : name.startsWith("leduc") ? "Leduc hold\u2019em" : name;
  const limit = name.includes("nolimit") ? "no-limit" : name.includes("limit") ? "limit" : "";
  const seats = /\.(\d+)p/.exec(name)?.[1];
  const round = /^kuhn\.(preflop|flop|turn|river)/.exec(name)?.[1];
  return [kind, round, limit === "limit" && kind === "Kuhn poker" ? "" : limit, seats ? `for ${["", "one", "two", "three", "four"][Number(seats)] ?? seats}` : ""]
    .filter(Boolean)
    .join(", ")
    .replace(/, for/, " for");
}
