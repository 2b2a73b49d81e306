// Makes elements. Text from files enters the page as text nodes and attribute values only; nothing in
// the page parses HTML, and its Content-Security-Policy refuses to. On its way it is made visible.
import { visible } from './visible';

export type Child = Node | string | null | undefined | false;
type Attribute = string | number | boolean | EventListener | undefined;

export function h<K extends keyof HTMLElementTagNameMap>(
  tag: K, attributes: Record<string, Attribute> = {}, ...children: Child[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') element.addEventListener(name.slice('on'.length), value);
    else if (value === true) element.setAttribute(name, '');
    else if (value !== undefined && value !== false) element.setAttribute(name, visible(String(value)));
  }
  append(element, children);
  return element;
}

export function append(element: Element, children: Child[]): void {
  for (const child of children) if (child) element.append(typeof child === 'string' ? visible(child) : child);
}

/** Puts a text in place of what an element holds. */
export function setText(element: Element, text: string): void {
  element.textContent = visible(text);
}

export function byId<T extends HTMLElement>(id: string): T {
  const element = document.getElementById(id);
  if (!element) throw new Error(`no element ${id}`);
  return element as T;
}

/** A labelled list to choose from; `options` are value and text. */
export function choice(
  label: string, options: [string, string][], value: string, onChange: (value: string) => void,
): HTMLLabelElement {
  const select = h('select', { onchange: () => onChange(select.value) },
    ...options.map(([key, text]) => h('option', { value: key, selected: key === value }, text)));
  select.value = value;
  return h('label', { class: 'control' }, h('span', {}, label), select);
}

export function checkbox(label: string, checked: boolean, onChange: (checked: boolean) => void): HTMLLabelElement {
  const input = h('input', { type: 'checkbox', checked, onchange: () => onChange(input.checked) });
  return h('label', { class: 'control check' }, input, h('span', {}, label));
}

export function button(label: string, onClick: () => void, attributes: Record<string, Attribute> = {}): HTMLButtonElement {
  return h('button', { type: 'button', onclick: onClick, ...attributes }, label);
}

/** A section of the report with its heading; `id` is what links name. */
export function section(id: string, title: string, lead: string, ...children: Child[]): HTMLElement {
  return h('section', { id, 'aria-labelledby': `${id}-title`, tabindex: -1 },
    h('h2', { id: `${id}-title` }, title), lead !== '' && h('p', { class: 'lead' }, lead), ...children);
}
