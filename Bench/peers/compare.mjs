// Compares a dataset and its service with PouchDB and its server: the same project, the same works, in turns.
// `run` beside this file tells the options, and gives the folder of the built programs.
import {execFileSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync} from 'node:fs';
import {createRequire} from 'node:module';
import {tmpdir} from 'node:os';
import {parseArgs} from 'node:util';
import {OwnSide} from './own.mjs';
import {PeerSide} from './peer.mjs';
import {pickEdits, rowsAfter} from './project.mjs';

const goal = 8;
const warmUpRows = 2000;
const durableEdits = 50; // of both sides, beside those that are synchronised afterwards
const works = [
  'full pull into an empty store',
  'incremental pull, 1 % changed',
  'one edit',
  'one edit, both on disk',
  'synchronisation, 1 % changed on each side',
];

const {values: options} = parseArgs({options: {
  programs: {type: 'string'},
  rounds: {type: 'string', default: '5'},
  rows: {type: 'string', default: '2000,10000,50000'},
  batch: {type: 'string', default: '5000'},
}});

function generate(folder, rows) {
  const [out, changeOut] = [`${folder}/project.json`, `${folder}/change.json`];
  execFileSync(`${options.programs}/tolm-generate`,
    ['--rows', rows, '--seed', 1, '--out', out, '--change', 1, '--change-out', changeOut].map(String));
  const [project, change] = [out, changeOut].map((file) => JSON.parse(readFileSync(file, 'utf8')));
  return {project, change, edits: pickEdits(project, change)};
}

/// All works of one round, each work by one side and then by the other. Gives the seconds of each side by work.
async function runRound(sides, round, {project, change, edits}) {
  const none = {add: {}, edit: {}, remove: {}};
  const seconds = new Map(works.map((work) => [work, []]));
  const [pull, increment, edit, durableEdit, sync] = [...seconds.values()];
  const inTurns = async (step) => {
    for (const side of sides) await step(side);
  };
  await inTurns((side) => side.beginRound(round));
  await inTurns(async (side) => pull.push(await side.pull()));
  await inTurns((side) => side.check(rowsAfter(project, none, []), false));
  await inTurns((side) => side.keep());
  await inTurns((side) => side.changeServer(change));
  await inTurns(async (side) => increment.push(await side.increment()));
  await inTurns((side) => side.check(rowsAfter(project, change, []), false));
  await inTurns(async (side) => durableEdit.push(await side.editDurably(edits.slice(0, durableEdits))));
  await inTurns((side) => side.restore());
  await inTurns(async (side) => edit.push(await side.edit(edits)));
  await inTurns(async (side) => sync.push(await side.sync()));
  await inTurns((side) => side.check(rowsAfter(project, change, edits), true));
  await inTurns((side) => side.endRound());
  return seconds;
}

let roundsBegun = 0; // names what a round leaves on a server

/// Rounds of one size. A list of [own seconds, peer's seconds] for each work.
async function runRounds(folder, sides, rows, rounds) {
  const generated = generate(folder, rows);
  for (const side of sides) await side.load(generated.project);
  const times = new Map(works.map((work) => [work, []]));
  for (let round = 1; round <= rounds; ++round) {
    const seconds = await runRound(sides, `${++roundsBegun}`, generated);
    for (const [work, pair] of seconds) times.get(work).push(pair);
    console.error(`${rows} rows, round ${round}: ${[...seconds.values()].map((pair) =>
      pair.map((value) => value.toPrecision(3)).join(' / ')).join('; ')}`);
  }
  return times;
}

const sorted = (values) => [...values].sort((a, b) => a - b);
const median = (values) => (sorted(values)[(values.length - 1) >> 1] + sorted(values)[values.length >> 1]) / 2;
const timeText = (seconds) => (seconds < 0.1 ? `${(seconds * 1000).toFixed(2)} ms` : `${(seconds * 1000).toFixed(0)} ms`);

const ratioText = (ratio) => ratio.toFixed(ratio < 0.1 ? 3 : 2);

function lineOf(work, rows, times) {
  const ratios = times.map(([own, peer]) => peer / own);
  const ratio = median(ratios);
  const ends = sorted(ratios).map(ratioText);
  return `| ${[work, rows, timeText(median(times.map(([own]) => own))), timeText(median(times.map(([, peer]) => peer))),
    ratioText(ratio), `${ends[0]} to ${ends.at(-1)}`, goal, ratio >= goal ? 'met' : 'missed'].join(' | ')} |`;
}

function printTable(lines) {
  const {dependencies} = createRequire(import.meta.url)('./package.json');
  console.log(`PouchDB ${dependencies.pouchdb}, express-pouchdb ${dependencies['express-pouchdb']}, Node.js `
    + `${process.versions.node}; batches of ${options.batch}; ${options.rounds} rounds.\n`);
  console.log('| Work | Rows | TolmDataSet, durable | PouchDB, not durable | Ratio | Range | Goal | |');
  console.log('|---|---|---|---|---|---|---|---|');
  for (const work of works) lines.filter((line) => line.work === work).forEach(({line}) => console.log(line));
}

async function main() {
  const folder = mkdtempSync(`${tmpdir()}/tolm-peers-`);
  for (const signal of ['SIGINT', 'SIGTERM']) process.on(signal, () => process.exit(1));
  const sides = [new OwnSide(folder, options.programs), new PeerSide(folder, Number(options.batch))];
  for (const side of sides) await side.start();
  process.on('exit', () => rmSync(folder, {recursive: true, force: true, maxRetries: 9}));
  await runRounds(folder, sides, warmUpRows, 1);
  const lines = [];
  for (const rows of options.rows.split(',').map(Number)) {
    for (const [work, times] of await runRounds(folder, sides, rows, Number(options.rounds)))
      lines.push({work, line: lineOf(work, rows, times)});
  }
  for (const side of sides) await side.stop();
  printTable(lines);
}

await main();
