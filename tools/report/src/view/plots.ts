// What all drawings made with Observable Plot have in common.
import * as Plot from '@observablehq/plot';

/** Draws with the page's colours; `label` is what a screen reader says in place of the drawing. */
export function plot(label: string, options: Plot.PlotOptions): Element {
  const { style, ...rest } = options;
  return Plot.plot({
    ariaLabel: label,
    marginTop: 28,
    style: { background: 'transparent', color: 'var(--ink)', fontSize: '12px', fontFamily: 'inherit', overflow: 'visible', ...(style as object) },
    ...rest,
  });
}

export { Plot };
