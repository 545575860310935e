// Checks the language of everything that is tracked: words and abbreviations that have a better one here, and the form
// of the documents.
//
//   node tools/check_language.mjs [PATH...]     the whole project, or only what lies below the paths
//   node tools/check_language.mjs --self-check  tries each rule on its own examples
//
// Run from the root of the project. Prints each place as file:line with the better word; exit code 1 if there is one.
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';

// Names of reports, files and command arguments, which have a spelled-out name everywhere else. Those of two letters are
// left out: they mean something else in too many places, and none stands alone.
const wireNames =
  'sms|sbtn|stype|rptMode|rptTimes|locMode|tmv|tclk|tscr|tkey|trel|tspd|tloop|tloopMs|' +
  'ksh|ksm|kss|ksms|ksRptMode|ksRptTimes|ksCap|holdAuto|holdKeySpam|hkRec|hkPlay|hkAuto|hkKeySpam|hkUnlock';

// The files that map wire names to spelled-out ones: the program's table and reports, the page's decoder and its
// command arguments.
const wireFiles =
  /^src\/storage\/settings_table\.cpp$|^src\/app\/reports\.cpp$|^ui\/src\/(reports|commands)\.ts$/;

// A rule: what must not appear, what to write in its place, one line that breaks it and lines that do not. `in` limits
// a rule to the files where the word has that meaning.
const rules = [
  {
    find: /\b[Mm]aster\b(?! (?:device|pointer|keyboard))|\bRunMaster\b/,
    write: 'main process',
    bad: ['// The life of the master: start-up, main loop.', 'RunMaster();'],
    good: ['A master device of its own', 'XIAllMasterDevices'],
  },
  {
    find: /\bhomes\b|\b(?:the|this|each|every|one|a|any|no|Linux|Windows|native|simulated|real) home\b(?! (?:folder|directory|key)\b)|<home>|VARNELLE_HOME|DIST_HOME|\bHOME_(?:FOLDER|SOURCES)\b|\bhome [=!]==? '|TEST(?:_F)?\(Home\b/,
    write: 'backend',
    bad: ['// Linux home only; any thread.', 'platform/<home>/input.cpp', "if (home === 'linux') {"],
    good: ['the home folder', "setenv('HOME', home)", 'Home and End move it'],
  },
  {
    find: /(?<![.:\w])floors?\b(?!\()/,
    write: 'layer',
    bad: ['A source may include what is on its own floor.'],
    good: ['Math.floor(x)', 'std::floor(x)', 'floor(x)'],
  },
  {
    find: /\brooms\b|\b(?:the|its|each|another) room (?:that|which|of)\b/,
    write: 'module',
    bad: ['its logic in the room that owns the subject'],
    good: ['// There is room for 32 bytes.'],
  },
  {
    find: /\bpersons?\b/i,
    write: 'user',
    bad: ["the person's own size"],
    good: ['personal files'],
  },
  { find: /\bwhoever\b/i, write: 'the user, the caller', bad: ['not for whoever fetches one'], good: [] },
  {
    find: /(?<!build(?:s|ing)?\b.{0,40}|built\b.{0,40})\banew\b|\bMakeAnew\b/i,
    write: 'again',
    bad: ['is made anew when a host changes', 'Record anew'],
    good: ['Builds the text anew if the macro has changed.'],
  },
  { find: /\bin vain\b/i, write: 'fails, times out', bad: ['the wait was in vain'], good: [] },
  {
    find: /\blet(?:s|ting)? (?:it |them )?go\b/i,
    write: 'release',
    bad: ['Stopping lets go of the buttons.', 'let it go'],
    good: ['outlet going'],
  },
  {
    find: /\b(?:is|are|was|were|be|been|being) told\b(?! apart)/,
    write: 'is notified, is reported',
    bad: ['the page is told'],
    good: ['the two are told apart by the bit'],
  },
  {
    find: /\b(?:is|are|was|were|be|been|being) said\b/,
    write: 'is reported',
    bad: ['a failure is said in the answer'],
    good: [],
  },
  {
    find: /\b[Tt]ell[A-Z]\w*/,
    write: 'Notify, Report, Set',
    bad: ['TellPlacements(handler);'],
    good: ['Teller'],
  },
  {
    find: /(?:\/\/|\/\*|^\s*#)\s*(?:Gives(?! up)|Answers)\b/,
    write: 'Returns',
    bad: ['// Gives the path of a file.', '  # Answers with its number.'],
    good: ['// Gives up the batch.'],
  },
  {
    find: /\b[Bb]lanks?\b(?! lines?\b)(?<!about:blank)|\bTrimBlanks\b/,
    write: 'space',
    bad: ['without line breaks or blanks', 'TrimBlanks(text)'],
    good: ['a blank line', "goto('about:blank')"],
  },
  {
    find: /\bheld[ _-]?macro|heldMacro/i,
    write: 'pending import',
    bad: ['add the held macro', 'held-macro.tsx', 'HeldMacro'],
    good: ['what the macro leaves held'],
  },
  {
    find: /\bhook[ _]?thread|hookThread|raw[ -]input thread/i,
    write: 'input thread',
    bad: ['the hook thread', 'HookThreadMain', 'hook_thread.h', 'raw input thread'],
    good: ['the input thread'],
  },
  {
    find: /(?<!\bnot\b[^.]{0,80})\bbut for\b/i,
    write: 'except, apart from, unless',
    bad: ['Equal but for the stored settings'],
    good: ['Not for the reader, but for the one who fetches it'],
  },
  {
    find: /\bjudg(?:e|es|ed|ing|ement)\b/i,
    write: 'validate, decide',
    bad: ['is judged by its members alone'],
    good: [],
  },
  {
    find: /\bturn(?:s|ed)? (?:it |them )?down\b/,
    write: 'reject',
    bad: ['is turned down'],
    good: ['turn around'],
  },
  { find: /\bhurt\b/, write: 'corrupt', bad: ['a hurt file'], good: [] },
  {
    find: /\bnone there\b|\b(?:is|are) no numbers?\b/,
    write: 'not found, not a number',
    bad: ['a text that is no number'],
    good: ['a number that is not there'],
  },
  {
    find: /\blook-through\b|\blooked through\b/,
    write: 'scan',
    bad: ['each is looked through for what could do harm'],
    good: [],
  },
  {
    find: /\b[Cc]om(?:e|es|ing) to rest\b|\b[Cc]ame to rest\b/,
    write: 'settles',
    bad: ['once it has come to rest'],
    good: ['the rest comes to it'],
  },
  {
    find: /(?<!auto)clicker|(?<!ex|com|sup|im|de)presser/i,
    write: 'autoclicker, key spammer',
    bad: ['The Clicker panel', 'changePresser', 'clicker.css'],
    good: ['Autoclicker', 'autoclicker.cpp', 'compressed'],
  },
  {
    find: /\bframe\/\w+\.(?:cpp|h)\b|\bsrc\/frame\b/,
    write: 'app/...',
    bad: ['a row in `frame/commands.cpp`'],
    good: ['linux/frame_watch.cpp'],
  },
  {
    find: /\breq[A-Z]\w*/,
    write: 'request...',
    bad: ['engineState.reqToggleAuto'],
    good: ['requestToggleAutoclicker'],
  },
  {
    find: new RegExp(`(?<![\\w$-])(?:${wireNames})(?!":|[\\w-])`),
    write: 'the spelled-out field',
    in: (file) => /^(?:src|ui)\//.test(file) && !wireFiles.test(file),
    bad: ['settings.sms', '`ksRptMode`'],
    good: ['mss', 'assms', '{"hkRec":""}'],
  },
];

// Bytes of formats, kept as they were written, and this list.
const isChecked = (file) =>
  !/^tests\/fixtures\/|^tests\/fuzz\/corpus\/|^package-lock\.json$|^tools\/check_language\.mjs$/.test(file);

const kLongestDocumentLine = 120;
const kLongestCell = 150;

function documentProblems(line) {
  // A row of a table cannot be broken, so its cells have the limit.
  const problems = [];
  const isRow = /^\s*\|.*\|\s*$/.test(line);
  if (line.length > kLongestDocumentLine && !isRow) {
    problems.push(`line of ${line.length} characters: break it at ${kLongestDocumentLine}`);
  }
  if (isRow) {
    const cells = line
      .trim()
      .slice(1, -1)
      .split(/(?<!\\)\|/);
    for (const cell of cells) {
      const { length } = cell.trim();
      if (length > kLongestCell) problems.push(`table cell of ${length} characters: write a list`);
    }
  }
  return problems;
}

function problemsOf(file, line) {
  const problems = rules
    .filter((rule) => !rule.in || rule.in(file))
    .map((rule) => ({ rule, match: line.match(rule.find) }))
    .filter(({ match }) => match)
    .map(({ rule, match }) => `"${match[0].trim()}": write ${rule.write}`);
  return file.endsWith('.md') ? [...problems, ...documentProblems(line)] : problems;
}

function selfCheck() {
  const wrong = [];
  for (const rule of rules) {
    for (const line of rule.bad) if (!rule.find.test(line)) wrong.push(`not found by ${rule.find}: ${line}`);
    for (const line of rule.good) if (rule.find.test(line)) wrong.push(`found by ${rule.find}: ${line}`);
  }
  const cell = 'x'.repeat(kLongestCell);
  const forms = [
    ['x'.repeat(kLongestDocumentLine), 0],
    ['x'.repeat(kLongestDocumentLine + 1), 1],
    [`| a | ${cell} |`, 0],
    [`| a | ${cell}x |`, 1],
  ];
  for (const [line, count] of forms) {
    if (documentProblems(line).length !== count) wrong.push(`document form: ${line}`);
  }
  if (problemsOf('src/a.cpp', 'settings.sms').length !== 1) wrong.push('a wire name in src');
  if (problemsOf('tests/a.mjs', 'settings.sms').length !== 0) wrong.push('a wire name in a test');
  return wrong;
}

function check(paths) {
  const list = execFileSync('git', ['ls-files', '-z', '-co', '--exclude-standard', '--', ...paths], {
    encoding: 'utf8',
    maxBuffer: 1 << 26,
  });
  const problems = [];
  for (const file of list.split('\0').filter((name) => name && isChecked(name))) {
    for (const problem of problemsOf(file, file)) problems.push(`${file}: in its name: ${problem}`);
    let text;
    try {
      text = readFileSync(file, 'utf8');
    } catch {
      continue; // deleted, not yet committed
    }
    if (text.includes('\0')) continue;
    text.split('\n').forEach((line, index) => {
      for (const problem of problemsOf(file, line)) problems.push(`${file}:${index + 1}: ${problem}`);
    });
  }
  return problems;
}

const args = process.argv.slice(2);
const problems = args[0] === '--self-check' ? selfCheck() : check(args);
for (const problem of problems) console.error(problem);
console.log(`${rules.length} rules, ${problems.length} problems`);
process.exit(problems.length ? 1 : 0);
