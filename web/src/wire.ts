// What the server says, as src/web/ writes it, and how it is asked.

export interface Action {
  seat: number;
  round: number;
  type: "f" | "c" | "r";
  to: number; // what the seat has put in then, over the whole hand
}

export interface Options {
  owed: number;
  fold: boolean;
  raise: {min: number; max: number} | null; // totals
}

export interface Hand {
  hand: number;
  names: string[];
  you: number | null;
  blinds: number[];
  stacks: (number | null)[];
  actions: Action[];
  round: number;
  board: string[][]; // by round
  cards: (string[] | null)[];
  made: (string[] | null)[]; // by seat, by round
  toAct: number | null;
  options: Options | null;
  result: number[] | null;
}

export interface Interval {
  mean: number;
  halfWidth: number | null;
}

export interface TableNews {
  type: "table";
  table: number;
  version: number;
  game: string;
  limit: boolean;
  bigBlind: number;
  phase: "seating" | "playing" | "between" | "over";
  problem: string;
  notice: string;
  log: string;
  players: string[];
  session: {hands: number; chips: number; perHand: Interval | null};
  hand: Hand | null;
}

export interface Refusal {
  type: "refused";
  problem: string;
}

export interface GameInfo {
  game: string;
  seats: number;
  rounds: number;
  limit: boolean;
  bigBlind: number;
  opponents: {name: string; description: string; missing: string}[];
}

export interface OpenTable {
  table: number;
  game: string;
  players: string[];
  hands: number;
  phase: string;
}

export interface LogInfo {
  log: string;
  game: string;
  bytes: number;
}

export interface ListedHand {
  number: number;
  hand: number;
  names: string[];
  cards: (string[] | null)[];
  board: string[];
  chips: number[];
  actions: number;
}

export interface HandList {
  log: string;
  game: string;
  bigBlind: number;
  total: number;
  first: number;
  hands: ListedHand[];
  results: {player: string; hands: number; chips: number; mean: number; halfWidth: number | null}[];
}

export interface Curve {
  player: string;
  hands: number[];
  chips: number[];
  low: (number | null)[];
  high: (number | null)[];
}

export interface StrategyInfo {
  game: string;
  kind: "tree" | "grid";
  missing: string;
}

export interface TreeNode {
  seat: number;
  round: number;
  betting: string;
  reach: number;
  next: (number | null)[]; // by action: a node, -1 - the number of an end, or null
  sets: {card: string; reach: number; shares: number[]}[];
}

export interface Tree {
  game: string;
  seats: number;
  value: number[];
  best: number[];
  nashConv: number;
  nodes: TreeNode[];
  ends: {reach: number; paid: number[]}[];
}

export interface Grid {
  game: string;
  betting: string;
  seat: number;
  players: number;
  round: number;
  owes: boolean;
  next: (number | "end" | null)[];
  shares: number[][];
  buckets: number[]; // of every holding, -1 where it meets the board
}

// The token comes behind the address's '#', which browsers send to nobody. It is kept for this tab,
// so that the page can be loaded again, and taken out of what the address bar shows.
const tokenKey = "tamarin-token";

function kept(name: string): string | null {
  try {
    return sessionStorage.getItem(name);
  } catch {
    return null; // the browser keeps nothing: the printed address is needed again
  }
}

export interface Arrival {
  token: string;
  game: string;
}

export function arrive(): Arrival {
  const said = new URLSearchParams(location.hash.slice(1));
  const token = said.get("token");
  if (token) {
    try {
      sessionStorage.setItem(tokenKey, token);
    } catch {
      // see above
    }
    history.replaceState(null, "", "/#/play");
  }
  return {token: token ?? kept(tokenKey) ?? "", game: said.get("game") ?? ""};
}

export const arrival = arrive();

export class Problem extends Error {}

export async function ask<T>(question: string, values: Record<string, string | number> = {}): Promise<T> {
  const query = new URLSearchParams();
  for (const [name, value] of Object.entries(values)) query.set(name, String(value));
  // '+' for a space is a form's way and not the address's.
  const text = query.toString().replace(/\+/g, "%20");
  const answer = await fetch(`/api/${question}${text ? "?" + text : ""}`, {
    headers: {Authorization: `Bearer ${arrival.token}`},
  });
  const value = await answer.json();
  if (!answer.ok) throw new Problem(String(value.problem ?? answer.status));
  return value as T;
}

// One table's WebSocket, opened again whenever it breaks: the table goes on without it.
export class TableLine {
  private socket: WebSocket | null = null;
  private again: number | undefined;
  private wait = 250; // milliseconds, longer after every failure
  private ended = false;

  constructor(
    private first: object, // what to say: sit down, or be back
    private heard: (news: TableNews | Refusal) => void,
    private linked: (up: boolean) => void,
  ) {
    this.open();
  }

  private open() {
    this.socket = new WebSocket(`ws://${location.host}/table`, ["tamarin", arrival.token]);
    this.socket.onopen = () => {
      this.wait = 250;
      this.linked(true);
      this.say(this.first);
    };
    this.socket.onmessage = (event) => {
      const news = JSON.parse(String(event.data)) as TableNews | Refusal;
      // From now on it is that table and no new one.
      if (news.type === "table") this.first = {type: "back", table: news.table};
      this.heard(news);
    };
    this.socket.onclose = () => {
      if (this.ended) return;
      this.linked(false);
      this.again = window.setTimeout(() => this.open(), this.wait);
      this.wait = Math.min(this.wait * 2, 5000);
    };
  }

  say(message: object) {
    if (this.socket?.readyState === WebSocket.OPEN) this.socket.send(JSON.stringify(message));
  }

  close() {
    this.ended = true;
    window.clearTimeout(this.again);
    this.socket?.close();
  }
}
