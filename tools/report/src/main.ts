// The one script of the page. A worker runs it too, and finds no document there.
import { serve } from './engine';
import { startPage } from './page';

if (typeof document === 'undefined') {
  serve(globalThis as unknown as Parameters<typeof serve>[0]);
} else {
  startPage(document.currentScript?.textContent ?? '');
}
