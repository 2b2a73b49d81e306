// A place for a drawing: drawn when it comes near the screen, again when its width or the colours
// change, and for paper.
import { h, type Child } from './dom';
import { endPrint, onThemeChange, useLightForPrint } from './theme';

/** Widths on paper: A4 upright, half of it, and across. */
const kPrintWidth = { full: 660, half: 318, across: 960 };

export interface Chart {
  element: HTMLElement;
  /** Draws again because what it shows has changed. */
  update(): void;
}

interface Place {
  drawn: boolean;
  draw(width: number): void;
  box: HTMLElement;
  printWidth: number;
}

const places = new Set<Place>();
let printing = false;

const observer = typeof IntersectionObserver === 'undefined' ? null : new IntersectionObserver(
  (entries) => {
    for (const entry of entries) {
      if (!entry.isIntersecting) continue;
      const place = [...places].find((candidate) => candidate.box === entry.target);
      // One at a time, so that the page answers between two drawings.
      if (place && !place.drawn) setTimeout(() => place.drawn || drawPlace(place), 0);
    }
  }, { rootMargin: '400px' });

function drawPlace(place: Place): void {
  const width = printing ? place.printWidth : place.box.clientWidth;
  if (width === 0) return;
  place.drawn = true;
  place.draw(width);
}

function redrawAll(all: boolean): void {
  for (const place of places) {
    if (!place.box.isConnected) places.delete(place);
    else if (all || place.drawn) drawPlace(place);
  }
}

export function startCharts(): void {
  onThemeChange(() => redrawAll(false));
  addEventListener('beforeprint', () => {
    printing = true;
    useLightForPrint();
    redrawAll(true);
  });
  addEventListener('afterprint', () => {
    printing = false;
    endPrint();
    redrawAll(false);
  });
}

/**
 * A figure. `draw` returns what to show at a width in pixels; the caption says in words what is drawn
 * and where the same numbers stand as text. `smallest` is the width below which the figure scrolls
 * sideways rather than becoming illegible; `half` figures stand in pairs.
 */
export function chart(
  options: { title: string; caption: Child[]; height: number; smallest?: number; half?: boolean },
  draw: (width: number) => Element,
): Chart {
  const smallest = options.smallest ?? 0;
  const box = h('div', { class: 'plot', ...(smallest > 0 ? { tabindex: 0, role: 'group', 'aria-label': `${options.title}, scrolls sideways` } : {}) });
  box.style.minHeight = `${options.height}px`;
  const element = h('figure', { class: 'chart' },
    h('p', { class: 'chart-title' }, options.title), box, h('figcaption', {}, ...options.caption));
  let lastWidth = 0;
  const place: Place = {
    drawn: false, box, printWidth: kPrintWidth[options.half ? 'half' : smallest > 0 ? 'across' : 'full'],
    draw(width) {
      lastWidth = width;
      box.replaceChildren(draw(Math.max(width, printing ? 0 : smallest)));
      box.style.minHeight = '';
    },
  };
  places.add(place);
  observer?.observe(box);
  if (typeof ResizeObserver !== 'undefined') {
    new ResizeObserver(() => {
      if (place.drawn && !printing && Math.abs(box.clientWidth - lastWidth) > 1) drawPlace(place);
    }).observe(box);
  }
  return {
    element,
    update() {
      if (place.drawn) drawPlace(place);
    },
  };
}

/** Coloured keys with their names; `shapes` are drawn by the style sheet. */
export function legend(items: { name: string; colour: string; shape?: string }[]): HTMLElement {
  return h('ul', { class: 'legend' }, ...items.map((item) => {
    const key = h('span', { class: `key ${item.shape ?? 'line'}`, 'aria-hidden': 'true' });
    key.style.color = item.colour;
    return h('li', {}, key, item.name);
  }));
}
