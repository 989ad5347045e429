// Bundles the sources of the page with the 3D library into one classic script: modules do not load from a disk.
// usage: node bundle.mjs OUTPUT DIGEST_OF_THE_SOURCES
import { readFileSync, writeFileSync } from 'node:fs';
import { build } from 'esbuild';

const [output, digest] = process.argv.slice(2);
const result = await build({
  entryPoints: ['main.js'],
  bundle: true,
  format: 'iife',
  minify: true,
  target: 'es2022',
  charset: 'ascii',
  legalComments: 'none',
  loader: { '.css': 'text' },
  write: false,
});
const licence = readFileSync('node_modules/three/LICENSE', 'utf8').replaceAll('\u00a9', '(c)').trim();
const { version } = JSON.parse(readFileSync('node_modules/three/package.json', 'utf8'));
const script = `/* Made by scripts/page-bundle from sources of SHA-256 ${digest}; do not edit. Contains three.js ${version}:\n\n${licence}\n*/\n${result.outputFiles[0].text}`;
for (const [forbidden, why] of [[/[^\x00-\x7f]/, 'a character that is not ASCII'], [/<\/script|<!--/i, 'the end of its element'], [/\)viewer_script"/, 'the end of its literal']]) {
  if (forbidden.test(script)) {
    throw new Error(`the script contains ${why}`);
  }
}
writeFileSync(output, script);
