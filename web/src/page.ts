// What the parts of the page share: small things kept in the browser, and keys.
import {useLayoutEffect, useRef} from "preact/hooks";

export function kept(name: string): string | null {
  try {
    return localStorage.getItem("tamarin-" + name);
  } catch {
    return null;
  }
}

export function keep(name: string, value: string) {
  try {
    localStorage.setItem("tamarin-" + name, value);
  } catch {
    // It is only a convenience.
  }
}

// The table that this tab sits at, so that it finds it again after being loaded anew.
const tableKey = "tamarin-table";

export function tableOfTab(): number | null {
  try {
    const kept = sessionStorage.getItem(tableKey);
    return kept === null ? null : Number(kept);
  } catch {
    return null;
  }
}

export function sitsAt(table: number | null) {
  try {
    if (table === null) sessionStorage.removeItem(tableKey);
    else sessionStorage.setItem(tableKey, String(table));
  } catch {
    // The list of open tables leads back, too.
  }
}

// Keys that mean something wherever the focus is, but for fields that take text, and for Enter and
// the space bar on what they press. What is pressed is always heard by what is shown.
export function usePageKeys(pressed: (key: string) => boolean) {
  const latest = useRef(pressed);
  latest.current = pressed;
  useLayoutEffect(() => {
    const listen = (event: KeyboardEvent) => {
      if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
      const target = event.target as HTMLElement;
      const writes = target instanceof HTMLInputElement && target.type !== "checkbox" && target.type !== "range";
      if (writes || target instanceof HTMLSelectElement || target.closest("dialog")) return;
      const presses = target instanceof HTMLButtonElement || target instanceof HTMLAnchorElement || target.tagName === "SUMMARY" || target instanceof HTMLInputElement;
      if (presses && (event.key === "Enter" || event.key === " ")) return;
      const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
      if (latest.current(key)) event.preventDefault();
    };
    document.addEventListener("keydown", listen);
    return () => document.removeEventListener("keydown", listen);
  }, []);
}
