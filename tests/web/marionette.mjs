// marionette.mjs: Debian's Firefox without a window, driven over its Marionette protocol.
import {spawn} from 'node:child_process';
import {mkdtempSync, readFileSync, writeFileSync} from 'node:fs';
import {connect} from 'node:net';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {setTimeout as pause} from 'node:timers/promises';

// The shell waits for this process to end, however that may be: then Firefox goes, and its profile.
const script = `firefox-esr --marionette --headless --no-remote --profile "$1" >"$1/log" 2>&1 &
  read -r _; kill -9 $!; wait $!; rm -rf "$1"`;

/** What look gives, as soon as it gives something. Throws for what isn't there in time. */
export async function waitFor(what, look) {
  for (const end = Date.now() + 10000; Date.now() < end; await pause(30)) {
    const found = await look();
    if (found) return found;
  }
  throw new Error(`${what}: not within 10 s`);
}

/** What Firefox says: each message is `length:json`, its length in bytes. */
async function* messages(socket) {
  let received = Buffer.alloc(0);
  for await (const data of socket) {
    received = Buffer.concat([received, data]);
    for (let colon; (colon = received.indexOf(':')) > 0;) {
      const end = colon + 1 + Number(received.subarray(0, colon));
      if (received.length < end) break;
      yield JSON.parse(received.subarray(colon + 1, end));
      received = received.subarray(end);
    }
  }
  throw new Error('Firefox has ended');
}

/** A Firefox: send gives a command's answer; downloads go to the folder. What wants out comes to the port instead. */
export async function launch(proxyPort) {
  const profile = mkdtempSync(join(tmpdir(), 'orbel-firefox-'));
  const prefs = Object.entries({
    'network.proxy.type': 1, 'network.proxy.http': '127.0.0.1', 'network.proxy.http_port': proxyPort,
    'network.proxy.ssl': '127.0.0.1', 'network.proxy.ssl_port': proxyPort, 'network.proxy.failover_direct': false,
    'marionette.port': 0, 'browser.download.folderList': 2, 'browser.download.dir': profile,
  }).map(([name, value]) => `user_pref(${JSON.stringify(name)}, ${JSON.stringify(value)});\n`);
  writeFileSync(join(profile, 'user.js'), prefs.join(''));
  // Marionette turns updates, telemetry and the like off; the settings' server only where this lets it.
  const env = {...process.env, HOME: profile, MOZ_REMOTE_SETTINGS_DEVTOOLS: '1'};
  const shell = spawn('sh', ['-c', script, 'sh', profile], {env, stdio: ['pipe', 'ignore', 'ignore'], detached: true});
  const close = () => new Promise((resolve) => { shell.on('exit', resolve).stdin.end(); });
  const read = (name) => { try { return readFileSync(join(profile, name), 'utf8'); } catch { return ''; } };
  try {
    const socket = connect(Number(await waitFor('Firefox’s port', () => read('MarionetteActivePort'))), '127.0.0.1');
    const heard = messages(socket);
    await heard.next(); // its greeting
    const send = async (command, parameters) => {
      const text = JSON.stringify([0, 1, command, parameters]);
      socket.write(`${Buffer.byteLength(text)}:${text}`);
      const [, , error, result] = (await heard.next()).value;
      if (error) throw new Error(`${command}: ${error.message}`);
      return result;
    };
    await send('WebDriver:NewSession', {capabilities: {alwaysMatch: {strictFileInteractability: false}}});
    return {send, folder: profile, close};
  } catch (error) {
    error.message += `\n${read('log')}`;
    await close();
    throw error;
  }
}
