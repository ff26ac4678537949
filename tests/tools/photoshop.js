// photoshop.js ORBEL: plays the scripts of `orbel jsx` on a Photoshop that writes down what it is asked for.
const {execFileSync} = require('child_process');
const assert = require('assert');
const vm = require('vm');

function play(options, scopeIsKnown) {
  const put = {};
  const calls = [];
  const putter = (type) => (key, value) => { put[key] = [type, value]; };
  const document = {width: {as: (unit) => unit === 'px' ? 2000 : 0}, height: {as: (unit) => unit === 'px' ? 3000 : 0}};
  vm.runInNewContext(execFileSync(process.argv[2], ['jsx', ...options], {encoding: 'utf8'}), {
    app: {activeDocument: document},
    ActionDescriptor: function () {
      this.putDouble = putter('double');
      this.putBoolean = putter('boolean');
      this.putInteger = putter('integer');
    },
    DialogModes: {NO: 'no dialog'},
    charIDToTypeID: (id) => { assert.strictEqual(id.length, 4); return id; },
    stringIDToTypeID: (id) => 'string ' + id,
    executeAction: (id, descriptor, dialogs) => {
      calls.push([id, dialogs]);
      if (!scopeIsKnown && id.startsWith('string ')) throw new Error('no such command');
    },
  });
  return {put, calls};
}

const scope = 'string 6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4';
const plain = play(['--contrast', '1,2.5,3,4,-5', '--half', '--planes', '--cross', '7', '--edges', 'on,off,on,off,on'], true);
assert.deepStrictEqual(plain.calls, [[scope, 'no dialog']]);
const expected = {FCTR: ['double', 100], HALF: ['boolean', true], LUMI: ['boolean', false], WDTH: ['integer', 7]};
[1, 2.5, 3, 4, -5].forEach((gain, i) => {
  expected['CON' + (i + 1)] = ['double', gain];
  expected['RAD' + (i + 1)] = ['double', 3];
  expected['THR' + (i + 1)] = ['double', i === 0 ? 255 : 10];
  expected['EDG' + (i + 1)] = ['boolean', i % 2 === 0];
});
assert.deepStrictEqual(plain.put, expected);

const scaled = play(['--ref-edge', '1000', '--radius', '1,2,3,4,5'], false);
assert.deepStrictEqual(scaled.calls, [[scope, 'no dialog'], ['obEq', 'no dialog']]);
assert.deepStrictEqual([1, 2, 3, 4, 5].map((band) => scaled.put['RAD' + band][1]), [3, 6, 9, 12, 15]);

assert.throws(() => execFileSync(process.argv[2], ['jsx', '--mix', '50'], {stdio: 'pipe'}), {status: 2});
