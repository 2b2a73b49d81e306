// The answers in words, at the top.
import type { Finding, Level } from '../analysis/verdict';
import { h, section } from './dom';

const kLevelText: Record<Level, string> = {
  good: 'Good', look: 'Worth a look', act: 'To be acted on', plain: 'Fact', wait: 'In progress',
};

export function verdictSection(findings: Finding[], about: string): HTMLElement {
  return section('verdict', 'Verdict', about, h('div', { class: 'findings' }, ...findings.map(findingElement)));
}

/** Keeps "R-hat" on one line. */
const unbroken = (text: string): string => text.replaceAll('R-hat', 'R\u2011hat');

function findingElement(finding: Finding): HTMLElement {
  return h('article', { class: `finding ${finding.level}` },
    h('div', { class: 'finding-head' },
      h('h3', {}, finding.question),
      h('p', { class: 'level' }, h('span', { class: 'mark', 'aria-hidden': 'true' }), kLevelText[finding.level])),
    h('div', { class: 'finding-body' },
      h('p', { class: 'answer' }, unbroken(finding.answer)),
      finding.details.length > 0 && h('ul', {}, ...finding.details.map((detail) => h('li', {}, unbroken(detail)))),
      h('p', { class: 'evidence' }, h('a', { href: `#${finding.section}` }, 'See the evidence'))));
}
