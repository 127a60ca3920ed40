// The library's side of the comparison: a host in a process of its own, and the service in another one.
import {execFileSync, spawn} from 'node:child_process';
import {cpSync, existsSync, mkdirSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {once} from 'node:events';
import {createInterface} from 'node:readline';
import {setTimeout as sleep} from 'node:timers/promises';
import {catalogueOf, isEditable, requireSame, rowsOf, secondsOf} from './project.mjs';

const secret = 'a secret of this run';

/// The service and the host. Every round has a project of its own on the service.
export class OwnSide {
  name = 'TolmDataSet';

  constructor(folder, programs) {
    this.folder = `${folder}/own`;
    this.programs = programs;
    this.local = `${this.folder}/local`;
    this.env = {...process.env, TOLM_SERVICE_DB: `${this.folder}/settings.db`, COMPARE_SECRET: secret};
  }

  run(program, ...args) {
    return execFileSync(`${this.programs}/${program}`, args,
      {encoding: 'utf8', maxBuffer: 2 ** 30, env: this.env});
  }
  service(...args) {
    return this.run('tolm-service', ...args);
  }

  write(name, content) {
    writeFileSync(`${this.folder}/${name}`, JSON.stringify(content));
    return `${this.folder}/${name}`;
  }

  async start() {
    mkdirSync(this.folder);
    this.service('user', 'add', 'compare', '--secret-env', 'COMPARE_SECRET');
    const portFile = `${this.folder}/port`;
    this.server = spawn(`${this.programs}/tolm-service`, ['serve', '--quiet', '--port-file', portFile],
      {env: this.env, stdio: ['ignore', 'ignore', 'inherit']});
    process.on('exit', () => this.server.kill());
    const port = () => existsSync(portFile) && readFileSync(portFile, 'utf8').trim();
    while (!port()) await sleep(20);
    this.address = `http://127.0.0.1:${port()}`;
  }

  /// Starts a host that has the components of the project's fittings.
  async load(project) {
    await this.stopHost();
    rmSync(`${this.folder}/host`, {recursive: true, force: true});
    mkdirSync(`${this.folder}/host`);
    this.projectFile = this.write('project.json', project);
    this.run('tolm', 'new', `${this.folder}/host/set.db`, '--components',
      this.write('catalogue.json', catalogueOf(project)));
    const {componentFile} = JSON.parse(readFileSync(`${this.folder}/host/set.tolm.json`, 'utf8'));
    this.host = spawn(`${this.programs}/tolm-dataset-side`, [this.address, 'compare', componentFile],
      {env: {...process.env, TOLM_TOKEN: await this.signIn()}, stdio: ['pipe', 'pipe', 'inherit']});
    this.answers = createInterface({input: this.host.stdout})[Symbol.asyncIterator]();
  }

  async signIn() {
    const answer = await fetch(`${this.address}/api/SignIn`, {
      method: 'POST', headers: {'Content-Type': 'application/json'}, body: JSON.stringify({userId: 'compare', secret}),
    });
    return (await answer.json()).data.token;
  }

  async stopHost() {
    if (!this.host) return;
    this.host.stdin.end();
    await once(this.host, 'exit');
  }

  async stop() {
    await this.stopHost();
    this.server.kill();
    await once(this.server, 'exit');
  }

  async tell(command, ...args) {
    this.host.stdin.write([command, this.id, this.local, ...args].join(' ') + '\n');
    const {value, done} = await this.answers.next();
    if (done) throw new Error(`the library does not ${command}`);
    return Number(value);
  }

  /// The host's own clock counts; the way through the pipe does not.
  async timed(...words) {
    let seconds;
    await secondsOf(async () => { seconds = await this.tell(...words); });
    return seconds;
  }

  async beginRound(round) {
    this.id = round;
    this.service('project', 'create', '--project', this.id, '--name', this.id);
    this.service('project', 'fill', '--project', this.id, '--file', this.projectFile);
  }

  async endRound() {
    rmSync(this.local, {recursive: true});
    rmSync(`${this.local}.kept`, {recursive: true});
  }

  async keep() {
    cpSync(this.local, `${this.local}.kept`, {recursive: true});
  }

  async restore() {
    rmSync(this.local, {recursive: true});
    cpSync(`${this.local}.kept`, this.local, {recursive: true});
  }

  async changeServer(change) {
    const file = this.write('change.json', {format: 'tolm-change', formatVersion: 1, ...change});
    this.service('change', 'apply', '--project', this.id, '--file', file);
  }

  pull() { return this.timed('pull'); }
  increment() { return this.timed('pull'); }
  edit(picked) { return this.timed('edit', ...picked.map(({id}) => id)); }
  editDurably(picked) { return this.edit(picked); }
  sync() { return this.timed('sync'); }

  /// The host has made sure that dataset and service are at the same version.
  async check(expected, both) {
    if (await this.tell('count') !== expected.filter(isEditable).length) throw new Error('the dataset has not the records it has to have');
    if (!both) return;
    const {tables} = JSON.parse(this.service('export', '--project', this.id));
    requireSame(expected, rowsOf(tables), 'the project on the service');
  }
}
