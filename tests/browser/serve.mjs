// What the browser tests share: `kontavo serve` started on a free loopback port of its own.
import { spawn } from 'node:child_process';
import { createServer } from 'node:net';

// Starts the service with env (its KONTAVO_HOME) and waits until it listens; returns the child
// process and the base address ("http://127.0.0.1:PORT/").
export async function startKontavoServer(kontavo, env) {
  const port = await new Promise((resolve) => {
    const probe = createServer().listen(0, '127.0.0.1', () => {
      const { port } = probe.address();
      probe.close(() => resolve(port));
    });
  });
  const server = spawn(kontavo, ['serve', '--port', String(port)], { env, stdio: ['ignore', 'pipe', 'inherit'] });
  await new Promise((resolve, reject) => {
    let seen = '';
    server.stdout.on('data', (chunk) => {
      seen += chunk;
      if (seen.includes('http://')) resolve();
    });
    server.on('exit', () => reject(new Error('kontavo serve ended: ' + seen)));
  });
  return { server, base: `http://127.0.0.1:${port}/` };
}
