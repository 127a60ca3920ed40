// PouchDB's side of the comparison: its client in this process, its server in another one (`node peer.mjs FOLDER`
// serves databases in the folder and prints its port).
import {spawn} from 'node:child_process';
import {closeSync, cpSync, fdatasyncSync, mkdirSync, openSync, readdirSync, rmSync} from 'node:fs';
import {once} from 'node:events';
import {fileURLToPath} from 'node:url';
import PouchDB from 'pouchdb';
import {editedKeyOf, idOf, keyOf, requireSame, rowsOf, secondsOf} from './project.mjs';

const bulk = 2000; // documents in one request that fills a server

const documentsOf = (tables) => rowsOf(tables).map(([table, row]) => ({_id: keyOf(table, idOf(row)), table, ...row}));

async function store(database, documents) {
  for (let from = 0; from < documents.length; from += bulk) {
    const answers = await database.bulkDocs(documents.slice(from, from + bulk));
    if (answers.some((answer) => answer.error)) throw new Error('the server does not take a document');
  }
}

async function fetchAll(database, keys) {
  const {rows} = await database.allDocs({keys, include_docs: true});
  return rows.map((row) => row.doc);
}

/// Every round has a database of its own on the server.
export class PeerSide {
  name = 'PouchDB';

  constructor(folder, batch) {
    this.folder = `${folder}/peer`;
    this.local = `${this.folder}/local`;
    this.options = {batch_size: batch};
  }

  async start() {
    mkdirSync(`${this.folder}/server`, {recursive: true});
    this.process = spawn(process.execPath, [fileURLToPath(import.meta.url), `${this.folder}/server`],
      {stdio: ['ignore', 'pipe', 'inherit']});
    process.on('exit', () => this.process.kill());
    const [port] = await once(this.process.stdout, 'data');
    this.address = `http://127.0.0.1:${Number(port)}`;
  }

  async stop() {
    this.process.kill();
    await once(this.process, 'exit');
  }

  async load(project) {
    this.project = project;
  }

  async beginRound(round) {
    this.remote = new PouchDB(`${this.address}/round-${round}`);
    await store(this.remote, documentsOf(this.project.tables));
  }

  async endRound() {
    await this.database.destroy();
    await this.remote.destroy();
    rmSync(`${this.local}.kept`, {recursive: true});
  }

  pull() {
    return secondsOf(async () => {
      this.database = new PouchDB(this.local);
      await this.database.replicate.from(this.remote, this.options);
    });
  }

  /// Notes on both sides that there is nothing to send, as every synchronisation does, and puts a copy aside.
  async keep() {
    await this.database.replicate.to(this.remote, this.options);
    await this.database.close();
    cpSync(this.local, `${this.local}.kept`, {recursive: true});
    this.database = new PouchDB(this.local);
  }

  async restore() {
    await this.database.close();
    rmSync(this.local, {recursive: true});
    cpSync(`${this.local}.kept`, this.local, {recursive: true});
    this.database = new PouchDB(this.local);
  }

  async changeServer({add, edit, remove}) {
    const edited = documentsOf(edit);
    const old = await fetchAll(this.remote, edited.map((document) => document._id));
    const gone = await fetchAll(this.remote,
      Object.entries(remove).flatMap(([table, ids]) => ids.map((id) => keyOf(table, id))));
    await store(this.remote, [
      ...documentsOf(add),
      ...edited.map((document, i) => ({...document, _rev: old[i]._rev})),
      ...gone.map(({_id, _rev}) => ({_id, _rev, _deleted: true})),
    ]);
  }

  increment() {
    return secondsOf(() => this.database.replicate.from(this.remote, this.options));
  }

  /// Edits one after the other, with work after each.
  async editEach(picked, afterwards) {
    const documents = await fetchAll(this.database, picked.map(({table, id}) => keyOf(table, id)));
    for (const document of documents) document[editedKeyOf(document)] += ' local';
    const seconds = await secondsOf(async () => {
      for (const document of documents) {
        await this.database.put(document);
        afterwards();
      }
    });
    return seconds / documents.length;
  }
  edit(picked) {
    return this.editEach(picked, () => {});
  }
  /// What is asked for of LevelDB when a write has to be on disk: a sync of its log.
  editDurably(picked) {
    return this.editEach(picked, () => {
      for (const name of readdirSync(this.local).filter((file) => file.endsWith('.log'))) {
        const log = openSync(`${this.local}/${name}`);
        fdatasyncSync(log);
        closeSync(log);
      }
    });
  }

  sync() {
    return secondsOf(() => this.database.sync(this.remote, this.options));
  }

  /// Throws unless the store holds these rows and, with `both`, the server too.
  async check(expected, both) {
    for (const database of both ? [this.database, this.remote] : [this.database]) {
      const {rows} = await database.allDocs({include_docs: true});
      requireSame(expected, rows.map(({doc}) => [doc.table, doc]), `a database of ${this.name}`);
    }
  }
}

async function serve(folder) {
  const {default: server} = await import('express-pouchdb');
  const app = server(PouchDB.defaults({prefix: `${folder}/`}),
    {mode: 'minimumForPouchDB', overrideMode: {exclude: ['compression']}});
  const listening = app.listen(0, '127.0.0.1', () => console.log(listening.address().port));
}

if (process.argv[1] === fileURLToPath(import.meta.url)) await serve(process.argv[2]);
