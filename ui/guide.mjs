// Reads the user's guide for the help of the page. The help has no pictures and no other documents.
import { readFileSync } from 'node:fs';
import { lexer, Marked } from 'marked';

const renderer = {
  link: ({ text }) => `<code>${text}</code>`,
  image: () => '',
  html: () => '',
};

// Returns the sections of a guide in Markdown: [{ title, html }]. What comes before the first one, its title and its
// table of contents, is left out.
export function readGuide(path) {
  const sections = [];
  for (const token of lexer(readFileSync(path, 'utf8'))) {
    if (token.type === 'heading' && token.depth === 2) sections.push({ title: token.text, tokens: [] });
    else if (sections.length > 0) sections.at(-1).tokens.push(token);
  }
  const marked = new Marked({ renderer });
  return sections.map(({ title, tokens }) => ({ title, html: marked.parser(tokens).trim() }));
}

// The plugin of esbuild that offers them to the page as the module `guide`.
export const guidePlugin = (path) => ({
  name: 'guide',
  setup(build) {
    build.onResolve({ filter: /^guide$/ }, () => ({ path, namespace: 'guide' }));
    build.onLoad({ filter: /.*/, namespace: 'guide' }, () => ({
      contents: JSON.stringify(readGuide(path)),
      loader: 'json',
    }));
  },
});
