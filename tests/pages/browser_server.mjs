// Builds the page and starts the browser that all page tests of a run share: node browser_server.mjs FOLDER
//
// Writes FOLDER/index.html and then FOLDER/browser with the address of the browser; runs until it is terminated.
import { renameSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { chromium } from 'playwright-core';
import { buildPage, kBrowserOptions } from './browser.mjs';

const folder = process.argv[2];
writeFileSync(join(folder, 'index.html'), buildPage());
const server = await chromium.launchServer({ ...kBrowserOptions, host: '127.0.0.1' });
writeFileSync(join(folder, 'browser.part'), server.wsEndpoint());
renameSync(join(folder, 'browser.part'), join(folder, 'browser'));
