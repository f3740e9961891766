// The table itself, as it stood after so many actions: seats, cards, bets, pot. Played and replayed
// hands look the same.
import {Cards} from "./cards";
import {chipText, signed, stepOf, type Step} from "./step";
import type {Hand} from "./wire";

function Chips({amount, label}: {amount: number; label: string}) {
  if (!amount) return null;
  return (
    <span class="chips">
      <i aria-hidden="true" />
      <span class="sr">{label} </span>
      {chipText(amount)}
    </span>
  );
}

function Seat({hand, step, seat, open, marked}: {hand: Hand; step: Step; seat: number; open: boolean; marked: boolean}) {
  const own = seat === hand.you;
  const cards = own || open ? hand.cards[seat] : null;
  const made = own || open ? hand.made[seat]?.[step.round] : null;
  const stack = hand.stacks[seat];
  const holding = hand.cards.find((held) => held)?.length ?? 1;
  const result = step.end && hand.result ? hand.result[seat] : undefined;
  const classes = ["seat", own ? "own" : "", step.folded[seat] ? "folded" : "", marked ? "acting" : "", (result ?? 0) > 0 ? "won" : ""];
  return (
    <section class={classes.filter(Boolean).join(" ")} aria-label={own ? "Your seat" : `${hand.names[seat]}\u2019s seat`}>
      <div class="held">
        {step.folded[seat] && !cards ? <span class="mucked">no cards</span> : <Cards cards={cards} count={holding} />}
      </div>
      <div class="plate">
        <span class="name">{own ? "You" : hand.names[seat]}</span>
        {stack !== null && stack !== undefined && <span class="stack">{chipText(stack - (step.spent[seat] ?? 0))}</span>}
        <span class="said">{result !== undefined ? <b class={result > 0 ? "gain" : result < 0 ? "loss" : ""}>{signed(result)}</b> : marked ? (own ? "your turn" : "thinking") : step.said[seat] || "\u00a0"}</span>
        {made && <span class="made">{made}</span>}
      </div>
      <div class="bet">
        <Chips amount={step.bets[seat] ?? 0} label="in this round" />
      </div>
    </section>
  );
}

export function Felt({hand, count, title, openAll}: {hand: Hand; count: number; title: string; openAll?: boolean}) {
  const step = stepOf(hand, count);
  const seats = hand.names.map((_, seat) => seat);
  const own = hand.you ?? 0;
  // Round the table from the person's left.
  const others = [...seats.slice(own + 1), ...seats.slice(0, own)];
  const board = hand.board.slice(0, step.round + 1).flat();
  const boardSize = hand.board.flat().length;
  const inBets = step.bets.reduce((sum, bet) => sum + bet, 0);
  const open = Boolean(openAll) || (step.end && hand.result !== null);
  return (
    <div class={`felt players${Math.min(hand.names.length, 4)}`}>
      <div class="others">
        {others.map((seat) => (
          <Seat key={seat} hand={hand} step={step} seat={seat} open={open} marked={step.toAct === seat} />
        ))}
      </div>
      <div class="middle">
        <p class="round">{title}</p>
        <div class="board" role="group" aria-label="Board">
          {board.length > 0 ? <Cards cards={board} /> : hand.board.length > 1 || boardSize > 0 ? <span class="noboard" /> : null}
        </div>
        <p class="pot">
          <Chips amount={step.pot} label="Pot" />
          {inBets > 0 && step.pot > inBets && <span class="potnote">{chipText(step.pot - inBets)} before this round</span>}
        </p>
      </div>
      <Seat hand={hand} step={step} seat={own} open={open} marked={step.toAct === own} />
    </div>
  );
}
