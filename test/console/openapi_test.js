// The description of the service for server teams: valid, and of one mind with the server.

import assert from 'node:assert/strict';
import {after, test} from 'node:test';
import {Validator} from '@seriousme/openapi-schema-validator';
import Ajv from 'ajv/dist/2020.js';
import * as bodies from './bodies.js';
import {PATHS} from './bodies.js';
import {DEMO_HOST, readText, run, startServer, stopServers} from './world.js';

const description = JSON.parse(readText(new URL('../../docs/service_openapi.json', import.meta.url)));
const ajv = new Ajv({strict: false, allErrors: true});
ajv.addSchema(description, 'service');
after(stopServers);

// Whether the description takes a body of the path, or what it finds wrong.
function faultsIn(path, part, value) {
  const keys = ['paths', path, 'post', ...part, 'content', 'application/json', 'schema'];
  const pointer = keys.map((key) => encodeURIComponent(key.replaceAll('~', '~0').replaceAll('/', '~1'))).join('/');
  const check = ajv.getSchema('service#/' + pointer);
  return check(value) ? [] : check.errors.map((error) => error.instancePath + ' ' + error.message);
}

test('the description is valid OpenAPI 3.1', async () => {
  const {valid, errors} = await new Validator().validate(structuredClone(description));
  assert.ok(valid, JSON.stringify(errors));
  assert.equal(description.openapi, '3.1.0');
});

test('what the library sends, and what the server replies, keeps to it', async () => {
  const server = await startServer();
  const {status} = await run(DEMO_HOST, [`${process.env.JOURNEYS}/banking_day.json`, '--server', server.url]);
  assert.equal(status, 0);
  const rows = await server.exchanges();
  assert.ok(rows.length > 10);
  for (const {id, path} of rows) {
    const [request, reply] = await Promise.all(['request', 'reply'].map((part) => server.json(`exchanges/${id}/${part}`)));
    assert.deepEqual(faultsIn(path, ['requestBody'], request), [], path);
    assert.deepEqual(faultsIn(path, ['responses', '200'], reply), [], path);
  }
  await server.stop();
});

// What to do to a right body, and whether it is right afterwards.
const CHANGES = [
  [PATHS.risk, () => bodies.transaction(), [
    [() => {}, true], [(b) => { delete b.keys.requestID; }, false], [(b) => { b.keys.requestID = 'x'; }, false],
    [(b) => { b.keys.user_id = 'no or'; }, false], [(b) => { b.TRANSACTION.amount = '12'; }, false],
    [(b) => { b.TRANSACTION.curType = 'eur'; }, false], [(b) => { delete b.TRANSACTION.user; }, false],
    [(b) => { b.TRANSACTION = {checkpoint_type: 'TRANSACTION'}; }, true], [(b) => { b.TRANSACTION = {}; }, false],
    [(b) => { b.keys.checkpoint = 'LOGIN'; }, false], [(b) => { b.keys.checkpoint = 'NOWHERE'; }, false], [(b) => { b.further = 1; }, false]]],
  [PATHS.traces, () => bodies.traces('http://h/'), [
    [() => {}, true], [(b) => { b.tracingData = []; }, false], [(b) => { b.tracingData[0].date = 'today'; }, false],
    [(b) => { delete b.tracingData[0].date; }, false], [(b) => { b.tracingData.at(-1).error_code = 1.5; }, false]]],
  [PATHS.bio, () => bodies.biometrics(), [
    [() => {}, true], [(b) => { b.bio_sensor_event_data.sensorsData[0].pop(); }, false],
    [(b) => { b.bio_sensor_event_data.eventListHeader.reverse(); }, false], [(b) => { delete b.bio_sensor_event_data; }, true]]],
  [PATHS.image, () => ({version: '1', anything: {}}), [[() => {}, true], [(b) => { delete b.version; }, false]]],
];

test('it takes what the server takes, and refuses what the server refuses', async () => {
  const server = await startServer();
  for (const [path, make, changes] of CHANGES) {
    for (const [change, isRight] of changes) {
      const body = make();
      change(body);
      const faults = faultsIn(path, ['requestBody'], body);
      assert.equal(faults.length === 0, isRight, `${path} ${change}: ${faults}`);
      assert.equal((await server.call(path, body)).status, isRight ? 200 : 400, `${path} ${change}`);
    }
  }
  await server.stop();
});
