// What all drawings made with Observable Plot have in common.
import * as Plot from '@observablehq/plot';
import { visible } from './visible';

/** Draws with the page's colours; `label` is what a screen reader says in place of the drawing. */
export function plot(label: string, options: Plot.PlotOptions): Element {
  const { style, ...rest } = options;
  return Plot.plot({
    ariaLabel: visible(label),
    marginTop: 28,
    style: { background: 'transparent', color: 'var(--ink)', fontSize: '12px', fontFamily: 'inherit', overflow: 'visible', ...(style as object) },
    ...rest,
  });
}

/**
 * Round points of one colour as a single path: thousands of elements would take the browser seconds
 * to lay out.
 */
export function cloud<T>(points: T[], options: { x: string; y: string; colour: string; r: number }): Plot.Dot {
  return Plot.dot(points, {
    x: options.x, y: options.y,
    render: (index, _scales, values) => {
      const path = document.createElementNS('http://www.w3.org/2000/svg', 'path');
      const [x, y] = [values.x ?? [], values.y ?? []];
      path.setAttribute('d', Array.from(index, (i) => `M${x[i].toFixed(1)},${y[i].toFixed(1)}h0`).join(''));
      path.setAttribute('stroke', options.colour);
      path.setAttribute('stroke-width', String(2 * options.r));
      path.setAttribute('stroke-linecap', 'round');
      path.setAttribute('stroke-opacity', '0.6');
      path.setAttribute('fill', 'none');
      return path;
    },
  });
}

export { Plot };
