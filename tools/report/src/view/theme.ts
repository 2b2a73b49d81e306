// Light and dark. Drawings in SVG follow the style sheet by themselves; drawings on a canvas ask for
// the colours of the moment and are made again when these change.

import { setText } from './dom';

const kThemes = ['auto', 'light', 'dark'] as const;
const kLabels = { auto: 'Colours: as the system', light: 'Colours: light', dark: 'Colours: dark' };
type Theme = (typeof kThemes)[number];

let theme: Theme = 'auto';
const listeners: (() => void)[] = [];

export const onThemeChange = (listener: () => void): void => void listeners.push(listener);

function apply(shown: Theme): void {
  if (shown === 'auto') delete document.documentElement.dataset.theme;
  else document.documentElement.dataset.theme = shown;
}

export function startTheme(button: HTMLButtonElement): void {
  const tell = () => {
    setText(button, kLabels[theme]);
    for (const listener of listeners) listener();
  };
  button.addEventListener('click', () => {
    theme = kThemes[(kThemes.indexOf(theme) + 1) % kThemes.length];
    apply(theme);
    tell();
  });
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', tell);
  setText(button, kLabels[theme]);
}

/** Paper is light. */
export const useLightForPrint = (): void => apply('light');
export const endPrint = (): void => apply(theme);

export function colour(name: string): string {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

/** Colours and symbols of series, which are told apart by both. */
export const kSeriesCount = 8;
export const seriesName = (index: number): string => `series-${(index % kSeriesCount) + 1}`;
export const seriesVariable = (index: number): string => `var(--${seriesName(index)})`;
