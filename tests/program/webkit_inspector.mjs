// A look into the real WebKitGTK view: the inspector that WEBKIT_INSPECTOR_HTTP_SERVER opens speaks JSON over a
// WebSocket.
import { createHash, randomBytes } from 'node:crypto';
import http from 'node:http';
import { pause } from './xtest_input.mjs';

const kAnswerMilliseconds = 5000;

function get(port, path) {
  return new Promise((resolve, reject) => {
    http
      .get({ host: '127.0.0.1', port, path, timeout: kAnswerMilliseconds }, (response) => {
        let text = '';
        response.on('data', (data) => (text += data));
        response.on('end', () => resolve(text));
      })
      .on('timeout', () => reject(new Error('the inspector does not answer')))
      .on('error', reject);
  });
}

function openWebSocket(port, path, onText) {
  return new Promise((resolve, reject) => {
    const key = randomBytes(16).toString('base64');
    const request = http.get({
      host: '127.0.0.1',
      port,
      path,
      headers: {
        Connection: 'Upgrade',
        Upgrade: 'websocket',
        'Sec-WebSocket-Version': '13',
        'Sec-WebSocket-Key': key,
      },
    });
    request.on('error', reject);
    request.setTimeout(kAnswerMilliseconds, () => reject(new Error('the inspector does not answer')));
    request.on('response', () => reject(new Error('the inspector refuses the connection')));
    request.on('upgrade', (response, socket) => {
      socket.setTimeout(0);
      const expected = createHash('sha1')
        .update(`${key}258EAFA5-E914-47DA-95CA-C5AB0DC85B11`)
        .digest('base64');
      if (response.headers['sec-websocket-accept'] !== expected) reject(new Error('no WebSocket'));
      let buffer = Buffer.alloc(0);
      let message = Buffer.alloc(0);
      socket.on('error', () => {});
      socket.on('data', (data) => {
        buffer = Buffer.concat([buffer, data]);
        for (;;) {
          if (buffer.length < 2) return;
          const [first, second] = buffer;
          let length = second & 0x7f;
          let header = 2;
          if (length === 126) {
            if (buffer.length < 4) return;
            length = buffer.readUInt16BE(2);
            header = 4;
          } else if (length === 127) {
            if (buffer.length < 10) return;
            length = Number(buffer.readBigUInt64BE(2));
            header = 10;
          }
          if (buffer.length < header + length) return;
          const payload = buffer.subarray(header, header + length);
          buffer = buffer.subarray(header + length);
          if ((first & 0x0f) > 2) continue;
          message = Buffer.concat([message, payload]);
          if (first & 0x80) {
            const text = message.toString('utf8');
            message = Buffer.alloc(0);
            onText(text);
          }
        }
      });
      resolve({
        send: (text) => {
          const payload = Buffer.from(text);
          const mask = randomBytes(4);
          const header = Buffer.alloc(payload.length < 126 ? 2 : 4);
          header[0] = 0x81;
          if (payload.length < 126) header[1] = 0x80 | payload.length;
          else {
            header[1] = 0x80 | 126;
            header.writeUInt16BE(payload.length, 2);
          }
          socket.write(Buffer.concat([header, mask, payload.map((byte, index) => byte ^ mask[index % 4])]));
        },
        close: () => socket.destroy(),
      });
    });
  });
}

// Connects to the one page there is; null while there is none yet.
export async function openInspector(port) {
  const listing = await get(port, '/').catch(() => '');
  const path = /socket\/\d+\/\d+\/WebPage/.exec(listing)?.[0];
  if (!path) return null;
  const answers = new Map();
  let count = 0;
  let foundTarget;
  const target = new Promise((resolve) => (foundTarget = resolve));
  let socket;
  const receive = (text) => {
    const message = JSON.parse(text);
    if (message.method === 'Target.targetCreated') foundTarget(message.params.targetInfo.targetId);
    if (message.method !== 'Target.dispatchMessageFromTarget') return;
    const inner = JSON.parse(message.params.message);
    answers.get(inner.id)?.(inner);
    answers.delete(inner.id);
  };
  try {
    socket = await openWebSocket(port, `/${path}`, receive);
  } catch {
    return null;
  }
  // A connection that comes while the page's process starts never hears of it.
  const targetId = await Promise.race([target, pause(kAnswerMilliseconds)]);
  if (!targetId) {
    socket.close();
    return null;
  }

  const ask = (method, params) =>
    new Promise((resolve) => {
      const id = ++count;
      answers.set(id, resolve);
      const message = JSON.stringify({ id, method, params });
      socket.send(
        JSON.stringify({ id, method: 'Target.sendMessageToTarget', params: { targetId, message } }),
      );
    });
  return {
    // The value of an expression; of what it promises, if it is a promise.
    evaluate: async (expression) => {
      const { result } = await ask('Runtime.evaluate', { expression });
      if (result.wasThrown) throw new Error(result.result.description);
      if (result.result.className !== 'Promise') return result.result.value;
      const awaited = await ask('Runtime.awaitPromise', {
        promiseObjectId: result.result.objectId,
        returnByValue: true,
      });
      if (awaited.result.wasThrown) throw new Error(String(awaited.result.result.value));
      return awaited.result.result.value;
    },
    close: socket.close,
  };
}
