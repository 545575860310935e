// A fake of the program, run inside the page before the page's own script: the page script of the web-view library with
// its promise table, the bound functions, and a small program behind them. Tests use it through `window.host`.
//
// Tests name everything in full; the wire names stand in the tables of this file only.

/**
 * @typedef {object} HostStatus
 * @property {'Idle' | 'Recording' | 'Playing'} state
 * @property {boolean} autoclickerRunning
 * @property {boolean} keySpammerRunning
 * @property {boolean} lockOn
 * @property {boolean} unlocked
 * @property {string} capture the hotkey or key that the program waits for, '' for none
 * @property {boolean} canUndoContinue
 * @property {string[]} targets key names of the key spammer
 * @property {boolean} chord
 *
 * @typedef {object} HostHotkeys
 * @property {string} record
 * @property {string} play
 * @property {string} autoclicker
 * @property {string} keySpammer
 * @property {string} unlock
 *
 * @typedef {object} HostSettings
 * @property {{intervalHours: number, intervalMinutes: number, intervalSeconds: number, intervalMilliseconds: number,
 *   button: number, doubleClick: number, repeatMode: number, repeatCount: number, locationMode: number,
 *   fixedX: number, fixedY: number}} autoclicker
 * @property {{intervalHours: number, intervalMinutes: number, intervalSeconds: number, intervalMilliseconds: number,
 *   repeatMode: number, repeatCount: number}} keySpammer
 * @property {{recordMoves: boolean, recordButtons: boolean, recordWheel: boolean, recordKeys: boolean,
 *   recordRawMoves: boolean, playbackSpeed: number, loop: boolean, loopPauseMilliseconds: number}} macro
 * @property {{holdAutoclicker: boolean, holdKeySpammer: boolean}} hotkeys
 *
 * @typedef {object} HostProfiles
 * @property {number} current
 * @property {string[]} names
 *
 * @typedef {object} HostPreferences
 * @property {boolean} alwaysOnTop
 * @property {boolean} launchOnStartup
 * @property {boolean} startMinimized
 * @property {boolean} hotkeysEnabled
 * @property {boolean} hotkeyLock
 * @property {boolean} stopToolsWithMacro
 * @property {boolean} disableAnimations
 * @property {boolean} showWarnings
 * @property {string[]} seenWarnings
 * @property {string[]} minimizedPanels
 * @property {string[]} panelOrder
 *
 * @typedef {object} HostAbout
 * @property {string} version
 * @property {'linux' | 'windows'} platform
 * @property {'x11' | 'wayland' | 'windows'} session
 * @property {string} dataFolder
 * @property {string} licenceFolder
 * @property {{part: string, licence: string, file: string}[]} licences
 *
 * @typedef {object} HostEvent
 * @property {number} time seconds
 * @property {'move' | 'rawMove' | 'button' | 'key' | 'wheel' | 'tool' | 'unknown'} type
 * @property {number} [x]
 * @property {number} [y]
 * @property {'left' | 'right' | 'middle' | 'side' | 'other'} [button]
 * @property {boolean} [down] of a button, key or tool
 * @property {number} [virtualKey]
 * @property {number} [wheel] delta
 * @property {'autoclicker' | 'keySpammer'} [tool]
 *
 * @typedef {object} HostProgress counts of what runs; the host adds the revisions
 * @property {number} clicks
 * @property {number} presses
 * @property {number} playRound
 * @property {number} playSeconds
 * @property {number} playEvent
 * @property {number} recordSeconds
 * @property {number} recordEvents
 * @property {boolean} picking
 *
 * @typedef {object} HostState what a test may set, each part by a setter of its name
 * @property {Partial<HostStatus>} [status]
 * @property {Partial<HostHotkeys>} [hotkeys]
 * @property {{[group in keyof HostSettings]?: Partial<HostSettings[group]>}} [settings]
 * @property {Partial<HostProfiles>} [profiles]
 * @property {Partial<HostPreferences>} [preferences]
 * @property {Partial<HostAbout>} [about]
 * @property {HostEvent[]} [events]
 * @property {number} [manyEvents] so many moves, a millisecond apart
 * @property {Partial<HostProgress>} [progress]
 * @property {object | null} [pendingImport] the document of the pending import
 * @property {object} [pendingSummary]
 * @property {object} [importOutcome] what the import dialog returns
 * @property {{name?: string, hasSettings?: boolean, events?: number, skippedLines?: number}} [importedProfile] what an
 *   import adds
 * @property {object} [lastImport] what getLastImport returns
 * @property {Record<string, number>} [hotkeyCodes]
 * @property {number} [countdownSeconds] 0 at first
 * @property {{outcome: string, file?: string, message?: string}} [exportOutcome]
 * @property {string} [earlyAlert] a message from before the page
 * @property {Record<string, string>} [failing] commands that are rejected, with the text
 * @property {string[]} [silent] commands that are never answered
 * @property {number} [answerDelay] ms before each answer
 * @property {boolean} [shortStatus] reports the status as a panel without a program does
 */

(() => {
    /** @type {HostStatus} */
    const status = {
        state: 'Idle',
        autoclickerRunning: false,
        keySpammerRunning: false,
        lockOn: true,
        unlocked: true,
        capture: '',
        canUndoContinue: false,
        targets: ['Space'],
        chord: false,
    };
    const kDefaultHotkeys = { record: 'F8', play: 'F7', autoclicker: 'F6', keySpammer: 'F9', unlock: 'F10' };
    /** @type {HostHotkeys} */
    const hotkeys = { ...kDefaultHotkeys };
    /** @type {HostSettings} */
    const settings = {
        autoclicker: {
            intervalHours: 0,
            intervalMinutes: 0,
            intervalSeconds: 0,
            intervalMilliseconds: 5,
            button: 0,
            doubleClick: 0,
            repeatMode: 1,
            repeatCount: 10,
            locationMode: 0,
            fixedX: 0,
            fixedY: 0,
        },
        keySpammer: {
            intervalHours: 0,
            intervalMinutes: 0,
            intervalSeconds: 0,
            intervalMilliseconds: 5,
            repeatMode: 1,
            repeatCount: 10,
        },
        macro: {
            recordMoves: true,
            recordButtons: true,
            recordWheel: true,
            recordKeys: true,
            recordRawMoves: false,
            playbackSpeed: 1,
            loop: false,
            loopPauseMilliseconds: 500,
        },
        hotkeys: { holdAutoclicker: false, holdKeySpammer: false },
    };
    /** @type {HostPreferences} */
    const preferences = {
        alwaysOnTop: false,
        launchOnStartup: false,
        startMinimized: false,
        hotkeysEnabled: true,
        hotkeyLock: true,
        stopToolsWithMacro: true,
        disableAnimations: false,
        showWarnings: false, // the tests of warnings turn them on
        seenWarnings: ['first-layout'], // not the first start
        minimizedPanels: [],
        panelOrder: [],
    };
    const profiles = {
        current: 0,
        names: ['Default Tracking Profile'],
        cap: -1,
        defaultName: 'Default Tracking Profile',
    };

    /** @type {HostProgress} */
    const progress = {
        clicks: 0,
        presses: 0,
        playRound: 0,
        playSeconds: 0,
        playEvent: 0,
        recordSeconds: 0,
        recordEvents: 0,
        picking: false,
    };
    const kKeyNames = {
        ...Object.fromEntries(
            [...'ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789'].map((one) => [one.charCodeAt(0), one]),
        ),
        ...Object.fromEntries(Array.from({ length: 12 }, (_, i) => [112 + i, `F${i + 1}`])),
        8: 'Backspace',
        32: 'Space',
        100: 'Num 4',
        160: 'Left Shift',
        163: 'Right Ctrl',
    };

    // The wire names, in the order of the settings report and of the update commands.
    const kSettingsWire = {
        autoclicker: {
            sh: 'intervalHours',
            sm: 'intervalMinutes',
            ss: 'intervalSeconds',
            sms: 'intervalMilliseconds',
            sbtn: 'button',
            stype: 'doubleClick',
            rptMode: 'repeatMode',
            rptTimes: 'repeatCount',
            locMode: 'locationMode',
            fixedX: 'fixedX',
            fixedY: 'fixedY',
        },
        macro: {
            tmv: 'recordMoves',
            tclk: 'recordButtons',
            tscr: 'recordWheel',
            tkey: 'recordKeys',
            trel: 'recordRawMoves',
            tspd: 'playbackSpeed',
            tloop: 'loop',
            tloopMs: 'loopPauseMilliseconds',
        },
        keySpammer: {
            ksh: 'intervalHours',
            ksm: 'intervalMinutes',
            kss: 'intervalSeconds',
            ksms: 'intervalMilliseconds',
            ksRptMode: 'repeatMode',
            ksRptTimes: 'repeatCount',
        },
        hotkeys: { holdAuto: 'holdAutoclicker', holdKeySpam: 'holdKeySpammer' },
    };

    /** @type {HostAbout} */
    const about = {
        version: '1.0.1',
        platform: 'linux',
        session: 'x11',
        dataFolder: '/home/user/.local/share/Varnelle',
        licenceFolder: '/opt/varnelle/licenses',
        licences: [
            { part: 'Preact', licence: 'MIT', file: 'preact.txt' },
            { part: 'Inter', licence: 'OFL 1.1', file: 'inter.txt' },
        ],
    };

    const promises = {}; // the library's own table, which it never empties
    let events = [];
    // The program raises these itself. Here a report compares the rows with those of the report before, so that a test
    // may change the events in any way.
    let revision = 1;
    let rewritten = 1;
    let reportedRows = { list: events, text: '' };
    // What the program keeps of former macros. `state` is what the other direction brings back.
    let lastStep = 0;
    const history = { undo: [], redo: [] };
    let pendingImport = null;
    let pendingSummary = {};
    let importOutcome = { outcome: 'cancelled' };
    const importedProfile = { name: 'Farm (Imported)', hasSettings: true, events: 1, skippedLines: 0 };
    let lastImport = { id: 0, outcome: 'none' };
    let exportOutcome = { outcome: 'cancelled' };
    const additional = { countdownSeconds: 0 }; // the tests of the countdown set it
    const hotkeyCodes = { record: 119, play: 118, autoclicker: 117, keySpammer: 120, unlock: 121 };
    const kBindings = {
        rec: 'record',
        play: 'play',
        auto: 'autoclicker',
        keyspamhotkey: 'keySpammer',
        unlock: 'unlock',
    };
    let earlyAlert = '';
    let answerDelay = 0;
    let shortStatus = false;
    let failing = {};
    const silent = new Set();
    let holding = false;
    const heldAnswers = [];

    // The frames of the browser, also where a test has stopped the page's clock.
    const requestFrame = window.requestAnimationFrame.bind(window);
    const nextFrame = () => new Promise((resolve) => requestFrame(resolve));

    // Copies values into a record, and fails on a name that the record does not have.
    function assign(record, values, what) {
        for (const [name, value] of Object.entries(values)) {
            if (!(name in record)) throw new Error(`the host has no ${what}.${name}`);
            record[name] = value;
        }
    }

    const setters = {
        /** @param {Partial<HostStatus>} values */
        setStatus(values) {
            assign(status, values, 'status');
            if ('lockOn' in values) preferences.hotkeyLock = values.lockOn;
        },
        /** @param {Partial<HostHotkeys>} values */
        setHotkeys: (values) => assign(hotkeys, values, 'hotkeys'),
        /** @param {NonNullable<HostState['settings']>} groups */
        setSettings(groups) {
            for (const [group, values] of Object.entries(groups)) {
                assign(settings[group] ?? {}, values, `settings.${group}`);
            }
        },
        /** @param {Partial<HostProfiles>} values */
        setProfiles: (values) => assign(profiles, values, 'profiles'),
        /** @param {Partial<HostPreferences>} values */
        setPreferences(values) {
            assign(preferences, values, 'preferences');
            if ('hotkeyLock' in values) status.lockOn = values.hotkeyLock;
        },
        /** @param {Partial<HostAbout>} values */
        setAbout: (values) => assign(about, values, 'about'),
        /** @param {HostEvent[]} list */
        setEvents: (list) => void (events = list),
        /** @param {number} count */
        setManyEvents(count) {
            events = Array.from({ length: count }, (_, i) => ({
                time: i / 1000,
                type: 'move',
                x: i % 1920,
                y: 5,
            }));
        },
        /** @param {Partial<HostProgress>} values */
        setProgress: (values) => assign(progress, values, 'progress'),
        /** @param {object | null} document */
        setPendingImport: (document) => void (pendingImport = document),
        /** @param {object} summary */
        setPendingSummary: (summary) => void (pendingSummary = summary),
        /** @param {{outcome: string}} outcome */
        setImportOutcome: (outcome) => void (importOutcome = outcome),
        /** @param {{name?: string, hasSettings?: boolean}} values */
        setImportedProfile: (values) => assign(importedProfile, values, 'importedProfile'),
        /** @param {object} values a new import */
        setLastImport: (values) => void (lastImport = { ...values, id: lastImport.id + 1 }),
        /** @param {{outcome: string}} outcome */
        setExportOutcome: (outcome) => void (exportOutcome = outcome),
        /** @param {Record<string, number>} codes */
        setHotkeyCodes: (codes) => assign(hotkeyCodes, codes, 'hotkeyCodes'),
        /** @param {number} seconds */
        setCountdownSeconds: (seconds) => void (additional.countdownSeconds = seconds),
        /** @param {string} text */
        setEarlyAlert: (text) => void (earlyAlert = text),
        /** @param {Record<string, string>} texts an empty record lets every command succeed again */
        setFailing(texts) {
            for (const name of Object.keys(texts)) {
                if (!(name in commands)) throw new Error(`the host has no command ${name}`);
            }
            failing = texts;
        },
        /** @param {string[]} names */
        setSilent(names) {
            for (const name of names) {
                if (!(name in commands)) throw new Error(`the host has no command ${name}`);
                silent.add(name);
            }
        },
        /** @param {number} milliseconds */
        setAnswerDelay: (milliseconds) => void (answerDelay = milliseconds),
        /** @param {boolean} isShort */
        setShortStatus: (isShort) => void (shortStatus = isShort),
    };

    function statusReport() {
        const whole = {
            state: status.state,
            count: events.length,
            restore: [],
            hkRec: hotkeys.record,
            hkPlay: hotkeys.play,
            hkAuto: hotkeys.autoclicker,
            hkKeySpam: hotkeys.keySpammer,
            hkUnlock: hotkeys.unlock,
            lockOn: status.lockOn,
            unlocked: status.unlocked,
            keySpamTargets: status.targets,
            keySpamChord: status.chord,
            ksCap: -1,
            reassigning: status.capture,
            panelHover: false,
            autoClicking: status.autoclickerRunning,
            keySpamming: status.keySpammerRunning,
            canUndoContinue: status.canUndoContinue,
        };
        if (!shortStatus) return JSON.stringify(whole);
        for (const key of ['hkUnlock', 'lockOn', 'unlocked', 'canUndoContinue']) delete whole[key];
        return JSON.stringify({ ...whole, ksCap: 0 });
    }

    function settingsReport() {
        const report = {};
        for (const [group, names] of Object.entries(kSettingsWire)) {
            for (const [wire, name] of Object.entries(names)) report[wire] = settings[group][name];
        }
        return JSON.stringify(report);
    }

    // Takes the values of an update command, in the order of the wire table.
    function update(group, text) {
        const names = Object.values(kSettingsWire[group]);
        text.split(',').forEach((value, i) => {
            const isTruth = typeof settings[group][names[i]] === 'boolean';
            settings[group][names[i]] = isTruth ? value === 'true' : Number(value);
        });
    }

    const kTypes = ['move', 'rawMove', 'button', 'key', 'wheel', 'tool'];
    const kButtonFlags = { left: [4, 2], right: [16, 8], middle: [64, 32], side: [128, 128], other: [0, 0] };
    function rowOf({ time, type, x = 0, y = 0, button, down = false, virtualKey = 0, wheel = 0, tool }) {
        const typeNumber = kTypes.includes(type) ? kTypes.indexOf(type) : 77;
        const flags = button ? kButtonFlags[button][Number(down)] : 0;
        const key = tool ? 1 + ['autoclicker', 'keySpammer'].indexOf(tool) : virtualKey;
        return [typeNumber, time, x, y, flags, key, Number(down), wheel];
    }

    // Raises the revision if the events differ from the last report's. A change of the last events counts as a change of
    // all, and of a long macro only the number of events is compared.
    function noteRevision() {
        const isLong = events.length > 5000;
        const text = isLong ? String(events.length) : JSON.stringify(events.map(rowOf)).slice(0, -1);
        if (events === reportedRows.list && text === reportedRows.text) return;
        revision++;
        if (isLong || !text.startsWith(reportedRows.text)) rewritten = revision;
        reportedRows = { list: events, text };
    }

    const isBusy = () => (status.state === 'Idle' ? '' : status.state.toLowerCase());

    // Runs an edit of the macro as the program does: refused while something runs or if the macro has changed since.
    function edit(text, reason, change) {
        const [asked, ...rest] = text.split(',');
        noteRevision();
        const refusal = isBusy() || (Number(asked) === revision ? '' : 'revision');
        if (refusal) return JSON.stringify({ done: false, reason: refusal });
        const before = events.map((event) => ({ ...event }));
        const changed = change(rest);
        if (changed > 0) keepStep(reason, before);
        noteRevision();
        return JSON.stringify({ done: true, revision, changed });
    }

    function keepStep(reason, before, undo) {
        const profile = profiles.names[profiles.current];
        const step = { id: ++lastStep, reason, profile, current: true, events: before.length };
        history.undo.unshift({ step, before, after: undefined, undo });
        history.redo = [];
    }

    function indexesOf(ranges) {
        return ranges.flatMap((range) => {
            const [first, last = first] = range.split('-').map(Number);
            return Array.from({ length: last - first + 1 }, (_, i) => first + i);
        });
    }

    // Moves entries from one direction to the other until the step with the id has been moved.
    function restore(from, to, id, isUndo) {
        const end = from.findIndex((entry) => entry.step.id === id);
        for (const entry of from.splice(0, end + 1)) {
            if (isUndo) entry.after = events;
            events = (isUndo ? entry.before : entry.after).map((event) => ({ ...event }));
            if (isUndo) entry.undo?.();
            to.unshift(entry);
        }
    }

    const commands = {
        updateSpammer: (text) => update('autoclicker', text),
        startSpammer: () => void (status.autoclickerRunning = true),
        stopSpammer: () => void (status.autoclickerRunning = false),
        updateKeySpam: (text) => update('keySpammer', text),
        startKeySpam: () => void (status.keySpammerRunning = status.targets.length > 0),
        stopKeySpam: () => void (status.keySpammerRunning = false),
        removeKeySpamTarget: (text) => void status.targets.splice(Number(text), 1),
        setKeySpamChordMode: (text) => void (status.chord = text === '1'),
        pickLocation: () => void (progress.picking = true),
        cancelPick: () => {
            progress.picking = false;
            return '{"done":true}';
        },
        setHoldMode: (text) => {
            const [tool, on] = text.split(',');
            settings.hotkeys[tool === 'auto' ? 'holdAutoclicker' : 'holdKeySpammer'] = on === '1';
        },
        lockHotkeys() {
            Object.assign(status, { unlocked: false, autoclickerRunning: false, keySpammerRunning: false });
            if (status.state === 'Playing') status.state = 'Idle';
            return JSON.stringify({ done: true });
        },
        resetHotkeys: () => void Object.assign(hotkeys, kDefaultHotkeys),
        getHotkeys: () =>
            JSON.stringify(
                Object.fromEntries(
                    Object.entries(kBindings).map(([wire, name]) => [wire, hotkeyCodes[name]]),
                ),
            ),
        setHotkey: (text) => {
            const [wire, code] = text.split(',');
            hotkeyCodes[kBindings[wire]] = Number(code);
            hotkeys[kBindings[wire]] = kKeyNames[code] ?? `Key ${code}`;
            return '{"done":true}';
        },
        getAdditionalSettings: () => JSON.stringify(additional),
        setAdditionalSetting: (text) => {
            const [key, value] = text.split(',');
            additional[key] = Number(value);
            return '{"done":true}';
        },
        updateTracker: (text) => update('macro', text),
        startRecording: () => {
            if (events.length > 0) keepStep('recording', events);
            status.state = 'Recording';
            events = [];
        },
        stopRecording: () => void (status.state = 'Idle'),
        continueRecording: () => void (status.state = 'Recording'),
        undoContinueRecording: () => void (status.canUndoContinue = false),
        startPlayback: () => void (status.state = 'Playing'),
        stopPlayback: () => void (status.state = 'Idle'),
        optimizeMacro: () => {
            const [first, last] = [events[0], events.at(-1)];
            if (events.length < 3) return;
            keepStep('optimise', events);
            events = [first, last];
        },
        getTrackerStatus: statusReport,
        getProgress: () => {
            noteRevision();
            return JSON.stringify({ revision, rewritten, ...progress });
        },
        getMacroRows: (text) => {
            noteRevision();
            const [first = 0, count = Infinity] = text.split(',').filter(Boolean).map(Number);
            const rows = events.slice(first, first + count).map(rowOf);
            return JSON.stringify({ revision, rewritten, first, total: events.length, rows });
        },
        getKeyNames: () => JSON.stringify(kKeyNames),
        deleteMacroEvents: (text) =>
            edit(text, 'edit', (ranges) => {
                const removed = new Set(indexesOf(ranges));
                events = events.filter((_, i) => !removed.has(i));
                return removed.size;
            }),
        shiftMacroEvents: (text) =>
            edit(text, 'edit', ([seconds, ...ranges]) => {
                const indexes = indexesOf(ranges);
                for (const i of indexes) events[i].time = Math.max(0, events[i].time + Number(seconds));
                return indexes.length;
            }),
        retimeMacroEvents: (text) =>
            edit(text, 'edit', (pairs) => {
                for (let i = 0; i < pairs.length; i += 2)
                    events[Number(pairs[i])].time = Number(pairs[i + 1]);
                return pairs.length / 2;
            }),
        addMissingReleases: (text) =>
            edit(text, 'addReleases', () => {
                const held = new Map();
                for (const event of events) {
                    const what = event.type === 'key' ? event.virtualKey : event.button;
                    if (event.type !== 'key' && event.type !== 'button') continue;
                    if (event.down) held.set(what, event);
                    else held.delete(what);
                }
                const time = Math.max(0, ...events.map((event) => event.time));
                events = [...events, ...[...held.values()].map((event) => ({ ...event, time, down: false }))];
                return held.size;
            }),
        getMacroHistory: () =>
            JSON.stringify({
                undo: history.undo.map(({ step }) => step),
                redo: history.redo.map(({ step }) => step),
            }),
        restoreMacro: (text) => {
            const id = Number(text);
            const refusal = isBusy();
            if (refusal) return JSON.stringify({ done: false, reason: refusal });
            if (history.undo.some(({ step }) => step.id === id))
                restore(history.undo, history.redo, id, true);
            else if (history.redo.some(({ step }) => step.id === id))
                restore(history.redo, history.undo, id, false);
            else return JSON.stringify({ done: false, reason: 'unknown' });
            noteRevision();
            return JSON.stringify({ done: true, revision });
        },
        clearProfile: () => {
            keepStep('clear', events);
            events = [];
        },
        addProfile: (name) => {
            profiles.names.push(name);
            profiles.current = profiles.names.length - 1;
            events = [];
        },
        deleteProfile: () => {
            const index = profiles.current;
            const [name] = profiles.names.splice(index, 1);
            keepStep('deleteProfile', events, () => {
                profiles.names.splice(index, 0, name);
                profiles.current = index;
            });
            Object.assign(history.undo[0].step, { profile: name, current: false });
            events = [];
            profiles.current = Math.min(profiles.current, profiles.names.length - 1);
        },
        switchProfile: (text) => void (profiles.current = Number(text)),
        getProfiles: () => JSON.stringify(profiles),
        exportMacro: () => JSON.stringify(exportOutcome),
        getLastImport: () => JSON.stringify(lastImport),
        useImportedSettings: () => {
            if (!lastImport.settingsUsable) return '{"done":false,"reason":"unknown"}';
            lastImport = { ...lastImport, settingsUsable: false };
            settings.autoclicker.intervalMilliseconds = 33;
            return '{"done":true}';
        },
        importProfile: () => {
            if (importOutcome.outcome === 'pending') pendingImport = importOutcome;
            if (importOutcome.outcome === 'imported') host.addImportedProfile();
            return JSON.stringify(importOutcome);
        },
        confirmMacroImport: (id) => {
            if (pendingImport?.pendingId !== id) return;
            pendingImport = null;
            host.addImportedProfile();
            window.onProfileImported?.();
        },
        cancelMacroImport: (id) => {
            if (pendingImport?.pendingId === id) pendingImport = null;
        },
        getPendingMacroImport: () => JSON.stringify(pendingImport ?? { outcome: 'none' }),
        getPendingMacroSummary: () => JSON.stringify(pendingSummary),
        getAbout: () => JSON.stringify(about),
        openDataFolder: () => JSON.stringify({ done: true }),
        getPendingThemeAlert: () => JSON.stringify(earlyAlert),
        getAppSettings: () => JSON.stringify(preferences),
        setAppSetting: (text) => {
            const [key, value] = text.split(',');
            const on = value === '1';
            if (key.startsWith('min:')) {
                const id = key.slice(4);
                const others = preferences.minimizedPanels.filter((other) => other !== id);
                preferences.minimizedPanels = on ? [...others, id] : others;
                return;
            }
            preferences[key] = on;
            if (key === 'hotkeyLock') {
                status.lockOn = on;
                status.unlocked = true;
            }
        },
        markWarningSeen: (id) => void preferences.seenWarnings.push(id),
        setPanelOrder: (text) => void (preferences.panelOrder = text === '' ? [] : text.split(',')),
        resizeWindow: () => {},
        openLink: () => {},
        getSettings: settingsReport,
        reassignKey: (text) => void (status.capture = text),
    };

    const host = {
        ...setters,
        promises,
        commands, // a test may replace one
        calls: [], // [name, argument text] of every call except the polls
        polls: 0, // status polls asked
        pollsInFlight: 0, // asked and not answered
        mostPollsInFlight: 0,
        unanswered: 0, // calls that will be answered
        status,
        profiles,
        get events() {
            return events;
        },
        get isHolding() {
            return holding;
        },
        // Sets every part that the state names.
        /** @param {HostState} state */
        setState(state) {
            for (const [part, value] of Object.entries(state)) {
                const setter = setters[`set${part[0].toUpperCase()}${part.slice(1)}`];
                if (!setter) throw new Error(`the host has no ${part}`);
                setter(value);
            }
        },
        // Resolves when the page has polled twice more, every call is answered, and the result is drawn. The page needs the
        // second poll for the events of a recording. It polls at once when it becomes visible, so this takes few frames.
        async settle() {
            for (let round = 0; round < 2; round++) {
                const before = host.polls;
                document.dispatchEvent(new Event('visibilitychange'));
                while (host.polls === before || host.unanswered > 0) await nextFrame();
            }
            await nextFrame();
            await nextFrame();
        },
        // Queues every answer from now on until releaseAnswers().
        holdAnswers: () => void (holding = true),
        releaseAnswers() {
            holding = false;
            for (const answer of heldAnswers.splice(0)) answer();
        },
        // Adds a profile as the program does from a file. Without settings in the file, the tools return to their defaults.
        addImportedProfile() {
            commands.addProfile(importedProfile.name);
            events = Array.from({ length: importedProfile.events }, (_, i) => ({
                time: i / 10,
                type: 'key',
                virtualKey: 65,
                down: i % 2 === 0,
            }));
            setters.setLastImport({
                outcome: 'imported',
                problem: '',
                file: 'Farm.vrlmacro',
                profile: importedProfile.name,
                events: events.length,
                skippedLines: importedProfile.skippedLines,
                seconds: events.at(-1)?.time ?? 0,
                fileSettings: importedProfile.hasSettings,
                settingsUsable: importedProfile.hasSettings,
            });
            if (importedProfile.hasSettings) return;
            Object.assign(settings.autoclicker, { intervalMilliseconds: 5, repeatMode: 1 });
            settings.keySpammer.intervalMilliseconds = 5;
        },
    };

    function receive(message) {
        const { id, method, params } = JSON.parse(message);
        // The program decodes a request like this: it drops brackets and quotation marks and unescapes nothing.
        const argText = JSON.stringify(params).replace(/[[\]"]/g, '');
        const isPoll = method === 'getTrackerStatus';
        if (isPoll) {
            host.polls++;
            host.mostPollsInFlight = Math.max(host.mostPollsInFlight, ++host.pollsInFlight);
        } else if (method !== 'getProgress') {
            host.calls.push([method, argText]);
        }
        if (silent.has(method)) return;
        host.unanswered++;
        const answer = () => {
            host.unanswered--;
            if (isPoll) host.pollsInFlight--;
            if (method in failing) {
                window.__webview__.onReply(id, 1, JSON.stringify(failing[method]));
                return;
            }
            const text = commands[method](argText);
            window.__webview__.onReply(id, 0, text === undefined ? undefined : text);
        };
        if (holding) heldAnswers.push(answer);
        else if (answerDelay > 0) setTimeout(answer, answerDelay);
        else queueMicrotask(answer);
    }

    class Webview {}
    Webview.prototype.post = receive;
    Webview.prototype.call = function (method, ...params) {
        const id = Math.random().toString(36).slice(2);
        const promise = new Promise((resolve, reject) => (promises[id] = { resolve, reject }));
        this.post(JSON.stringify({ id, method, params }));
        return promise;
    };
    Webview.prototype.onReply = function (id, state, result) {
        const promise = promises[id];
        let value = result;
        if (result !== undefined) {
            try {
                value = JSON.parse(result);
            } catch {
                promise.reject(new Error('Failed to parse binding result as JSON'));
                return;
            }
        }
        if (state === 0) promise.resolve(value);
        else promise.reject(value);
    };
    window.__webview__ = new Webview();
    const absent = window.absentCommands ?? [];
    for (const name of Object.keys(commands)) {
        if (absent.includes(name)) continue;
        window[name] = (...args) => Webview.prototype.call.apply(window.__webview__, [name, ...args]);
    }
    window.host = host;
})();
