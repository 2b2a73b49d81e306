// Many points over steps, drawn with uPlot on a canvas. Where several points share a column of pixels,
// uPlot draws their range only, so chains of any length cost the same.
import uPlot from 'uplot';
import { colour, seriesName } from './theme';
import { visible } from './visible';

export interface Line {
  name: string;
  values: Float64Array;
}

export function lineChart(options: {
  width: number; height: number; steps: Float64Array; lines: Line[]; yLabel: string; thin: boolean; label: string;
}): HTMLElement {
  const box = document.createElement('div');
  box.setAttribute('role', 'img');
  box.setAttribute('aria-label', visible(options.label));
  const axis = (label: string, size: number): uPlot.Axis => ({
    label, labelSize: 18, size, font: '12px system-ui, sans-serif', labelFont: '12px system-ui, sans-serif', stroke: colour('ink'),
    grid: { stroke: colour('grid'), width: 1 }, ticks: { stroke: colour('grid'), width: 1, size: 4 },
  });
  new uPlot({
    width: options.width, height: options.height,
    cursor: { show: false }, legend: { show: false }, select: { show: false, left: 0, top: 0, width: 0, height: 0 },
    padding: [8, 18, 0, 0],
    scales: { x: { time: false } },
    axes: [axis('Step', 30), axis(options.yLabel, 48)],
    series: [{}, ...options.lines.map((line, index): uPlot.Series => ({
      label: line.name, stroke: colour(seriesName(index)), width: options.thin ? 1 : 1.75, points: { show: false },
    }))],
  }, [options.steps, ...options.lines.map((line) => line.values)] as unknown as uPlot.AlignedData, box);
  return box;
}
