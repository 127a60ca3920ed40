// What both sides of the comparison need to know of a generated project.
import {execFileSync} from 'node:child_process';
import {performance} from 'node:perf_hooks';

const editedKeys = ['text', 'name', 'systemType', 'Name', 'LayingMode', 'data'];
const groups = new Set(['pipeFittingGroup', 'havcFittingGroup', 'ductFittingGroup']);
const editableTables = /^(ConfigTree|.*Pipe(System)?Type|Duct(System)?Type|ElectricalSystemType|.*FittingsType)$/;

export const idOf = (row) => row.ID ?? row.fileName;
export const keyOf = (table, id) => `${table}/${id}`;
/// The member that an edit changes; a name for all rows but files.
export const editedKeyOf = (row) => editedKeys.find((key) => key in row);
export const rowsOf = (tables) => Object.entries(tables).flatMap(([table, rows]) => rows.map((row) => [table, row]));

/// The rows after a change of the server and the edits made here.
export function rowsAfter(project, change, edits) {
  const rows = new Map(rowsOf(project.tables).map((row) => [keyOf(row[0], idOf(row[1])), row]));
  for (const row of [...rowsOf(change.add), ...rowsOf(change.edit)]) rows.set(keyOf(row[0], idOf(row[1])), row);
  for (const [table, ids] of Object.entries(change.remove)) ids.forEach((id) => rows.delete(keyOf(table, id)));
  for (const {table, id} of edits) {
    const row = {...rows.get(keyOf(table, id))[1]};
    row[editedKeyOf(row)] += ' local';
    rows.set(keyOf(table, id), [table, row]);
  }
  return [...rows.values()];
}

/// Throws unless both lists have the same rows, with the same in what an edit changes.
export function requireSame(expected, found, what) {
  const contents = (rows) => new Set(rows.map(([table, row]) => `${keyOf(table, idOf(row))} ${row[editedKeyOf(row)]}`));
  const [wanted, there] = [contents(expected), contents(found)];
  const differing = [...[...wanted].filter((content) => !there.has(content)).map((content) => `- ${content}`),
    ...[...there].filter((content) => !wanted.has(content)).map((content) => `+ ${content}`)];
  if (differing.length !== 0)
    throw new Error(`${what} is not what it has to be:\n${differing.slice(0, 10).join('\n')}`);
}

/// Materials, size tables, series and system types: what the library edits here and sends with a synchronisation.
export const isEditable = ([table, row]) => editableTables.test(table) && !groups.has(row.groupName);

/// 1 percent of a project's rows, evenly spread over those that the change leaves alone.
export function pickEdits(project, change) {
  const touched = new Set([
    ...rowsOf(change.edit).map(([, row]) => idOf(row)), ...Object.values(change.remove).flat()]);
  const rows = rowsOf(project.tables);
  const free = rows.filter((row) => isEditable(row) && !touched.has(idOf(row[1])));
  const count = Math.floor(rows.length / 100);
  return Array.from({length: count}, (_, i) => free[Math.floor((i * free.length) / count)])
    .map(([table, row]) => ({table, id: idOf(row)}));
}

/// The catalogue that the fittings of all series come from, as the command line imports it.
export function catalogueOf({tables}) {
  const fittings = rowsOf(tables).flatMap(([, row]) =>
    Object.values(row).filter(Array.isArray).flat().filter((entry) => entry?.FittingPartType !== undefined));
  const codes = [...new Set(fittings.map((fitting) => fitting.categoryCode))];
  return {
    disciplines: [{id: '2', name: 'Plumbing'}],
    categories: codes.map((code) => ({code, disciplineId: '2', name: `Fittings ${code}`})),
    components: fittings.map(({id, categoryCode}) => ({id, categoryCode, name: 'Fitting'})),
  };
}

/// Times work that begins when all that was done before is on disk, so that no side waits for the other's writes.
export async function secondsOf(work) {
  execFileSync('sync');
  const start = performance.now();
  await work();
  return (performance.now() - start) / 1000;
}
