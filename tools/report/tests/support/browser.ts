// Opens the page in Debian's Chromium and watches it: what it says on the console and what it asks for.
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';
import puppeteer, { type Browser, type Page } from 'puppeteer-core';

export const kProject = resolve('../..');
export const kPageFile = join(kProject, 'share/hovar/report.html');
/** Scratch files and screenshots, below the ignored build folder. */
export const kScratch = join(kProject, 'build/report');

export interface Watched {
  page: Page;
  /** Errors, warnings and uncaught exceptions. */
  complaints: string[];
  /** Addresses asked for beyond the page itself and what it made (blob:, data:). */
  requests: string[];
}

export async function withBrowser(use: (browser: Browser) => Promise<void>): Promise<void> {
  const profile = mkdtempSync(join(tmpdir(), 'hovar-report-'));
  const browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', userDataDir: profile,
    args: ['--headless=new', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  try {
    await use(browser);
  } finally {
    await browser.close();
    rmSync(profile, { recursive: true, force: true });
  }
}

export async function openPage(browser: Browser, file: string = kPageFile): Promise<Watched> {
  const page = await browser.newPage();
  const complaints: string[] = [];
  const requests: string[] = [];
  const address = pathToFileURL(file).href;
  page.on('console', (message) => {
    if (['error', 'warn'].includes(message.type())) complaints.push(message.text());
  });
  page.on('pageerror', (error) => complaints.push(String(error)));
  page.on('request', (request) => {
    if (request.url() !== address && !/^(blob|data):/.test(request.url())) requests.push(request.url());
  });
  await page.setViewport({ width: 1280, height: 900 });
  await page.goto(address);
  return { page, complaints, requests };
}

/** Drops folders and files as a person would, by the browser's own drag and drop. */
export async function drop(page: Page, files: string[]): Promise<void> {
  const session = await page.createCDPSession();
  const data = { items: [], files: files.map((file) => resolve(file)), dragOperationsMask: 1 };
  for (const type of ['dragEnter', 'dragOver', 'drop'] as const) {
    await session.send('Input.dispatchDragEvent', { type, x: 300, y: 200, data });
  }
  await session.detach();
}

export async function untilDone(page: Page, timeout = 60_000): Promise<void> {
  await page.waitForFunction(() => document.body.dataset.state === 'done' || document.body.dataset.state === 'failed', { timeout });
  const failure = await page.$eval('#failure', (element) => (element as HTMLElement).hidden ? '' : element.textContent);
  if (failure) throw new Error(failure);
}

/** The cells of a table, its header first, once all rows are shown. */
export async function tableOf(page: Page, label: string): Promise<string[][]> {
  return page.evaluate((wanted) => {
    const table = [...document.querySelectorAll('table')].find((t) => t.getAttribute('aria-label') === wanted);
    if (!table) throw new Error(`no table ${wanted}`);
    for (const button of table.closest('.data-table')?.querySelectorAll<HTMLElement>('.table-foot button') ?? []) {
      if (button.textContent === 'Show all' && !button.hidden) button.click();
    }
    const rows = [...table.querySelectorAll('thead tr:last-child, tbody tr')];
    return rows.map((row) => [...row.children].map((cell) => cell.textContent ?? ''));
  }, label);
}

/** The text of a section, or of the whole report. */
export async function textOf(page: Page, selector: string): Promise<string> {
  return page.$eval(selector, (element) => (element as HTMLElement).innerText);
}

export async function chooseIn(page: Page, section: string, label: string, value: string): Promise<void> {
  await page.evaluate((id, text, chosen) => {
    const control = [...document.querySelectorAll(`#${id} label.control`)].find((l) => l.querySelector('span')?.textContent === text);
    const select = control?.querySelector('select');
    if (!select) throw new Error(`no list ${text}`);
    select.value = chosen;
    select.dispatchEvent(new Event('change'));
  }, section, label, value);
}
