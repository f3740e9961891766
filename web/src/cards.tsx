// Cards, drawn here: a rank, a suit's shape, and a back.
const shapes: Record<string, string> = {
  // In a square of 20.
  h: "M10 18C4 13 1.5 10 1.5 6.7 1.5 4 3.6 2 6 2c1.700 0 3.200 1 4 2.500C10.800 3 12.300 2 14 2c2.400 0 4.500 2 4.500 4.700C18.500 10 16 13 10 18z",
  d: "M10 1.500 17 10 10 18.500 3 10z",
  s: "M10 1.500C15 6 18 8.500 18 11.500c0 2.300-1.800 3.800-3.800 3.800-1.300 0-2.400-.6-3.100-1.600.1 2 .8 3.500 2.200 4.800H6.700c1.400-1.300 2.100-2.800 2.200-4.800-.7 1-1.800 1.600-3.100 1.600C3.800 15.300 2 13.800 2 11.500 2 8.500 5 6 10 1.500z",
  c: "M10 1.500a3.800 3.800 0 0 1 3.200 5.900A3.900 3.900 0 1 1 11.100 12.800c.2 2.300.9 4.100 2.300 5.700H6.600c1.400-1.600 2.100-3.400 2.300-5.700A3.900 3.900 0 1 1 6.800 7.400 3.800 3.800 0 0 1 10 1.500z",
};
const suitNames: Record<string, string> = {h: "hearts", d: "diamonds", s: "spades", c: "clubs"};
const rankNames: Record<string, string> = {
  A: "ace", K: "king", Q: "queen", J: "jack", T: "ten", "9": "nine", "8": "eight", "7": "seven", "6": "six",
  "5": "five", "4": "four", "3": "three", "2": "two",
};

export function cardName(card: string): string {
  return `${rankNames[card[0] ?? ""] ?? "?"} of ${suitNames[card[1] ?? ""] ?? "?"}`;
}

export function Suit({suit}: {suit: string}) {
  return (
    <svg class={`suit ${suit}`} viewBox="0 0 20 20" aria-hidden="true">
      <path d={shapes[suit] ?? ""} />
    </svg>
  );
}

export function Card({card, small}: {card: string; small?: boolean}) {
  const rank = card[0] === "T" ? "10" : card[0];
  const suit = card[1] ?? "";
  return (
    <span class={`card ${suit}${small ? " small" : ""}`} role="img" aria-label={cardName(card)}>
      <b aria-hidden="true">{rank}</b>
      <Suit suit={suit} />
    </span>
  );
}

export function Back({small}: {small?: boolean}) {
  return <span class={`card back${small ? " small" : ""}`} role="img" aria-label="a card face down" />;
}

export function Cards({cards, count, small}: {cards: string[] | null | undefined; count?: number; small?: boolean}) {
  return (
    <span class="cards">
      {cards
        ? cards.map((card) => <Card key={card} card={card} small={small} />)
        : Array.from({length: count ?? 0}, (_, i) => <Back key={i} small={small} />)}
    </span>
  );
}
