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
 * @typedef {{time: number, desc: string}} HostEvent
 *
 * @typedef {object} HostState what a test may set, each part by a setter of its name
 * @property {Partial<HostStatus>} [status]
 * @property {Partial<HostHotkeys>} [hotkeys]
 * @property {{[group in keyof HostSettings]?: Partial<HostSettings[group]>}} [settings]
 * @property {Partial<HostProfiles>} [profiles]
 * @property {Partial<HostPreferences>} [preferences]
 * @property {Partial<HostAbout>} [about]
 * @property {HostEvent[]} [events]
 * @property {number} [manyEvents] so many moves, a millisecond apart, whose report is one prepared text
 * @property {object | null} [pendingImport] the document of the pending import
 * @property {object} [pendingSummary]
 * @property {object} [importOutcome] what the import dialog returns
 * @property {{name?: string, hasSettings?: boolean}} [importedProfile] what an import adds
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
    let eventsText = ''; // the prepared report of many events
    let pendingImport = null;
    let pendingSummary = {};
    let importOutcome = { outcome: 'cancelled' };
    const importedProfile = { name: 'Farm (Imported)', hasSettings: true };
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
        setEvents: (list) => void ((events = list), (eventsText = '')),
        /** @param {number} count */
        setManyEvents(count) {
            const rows = [];
            for (let i = 0; i < count; i++) {
                rows.push(
                    `{"id":${i},"time":${(i / 1000).toFixed(6)},"desc":"Abs Move to X:${i % 1920} Y:5"}`,
                );
            }
            eventsText = `[${rows.join(',')}]`;
            events.length = count;
        },
        /** @param {object | null} document */
        setPendingImport: (document) => void (pendingImport = document),
        /** @param {object} summary */
        setPendingSummary: (summary) => void (pendingSummary = summary),
        /** @param {{outcome: string}} outcome */
        setImportOutcome: (outcome) => void (importOutcome = outcome),
        /** @param {{name?: string, hasSettings?: boolean}} values */
        setImportedProfile: (values) => assign(importedProfile, values, 'importedProfile'),
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

    const commands = {
        updateSpammer: (text) => update('autoclicker', text),
        startSpammer: () => void (status.autoclickerRunning = true),
        stopSpammer: () => void (status.autoclickerRunning = false),
        updateKeySpam: (text) => update('keySpammer', text),
        startKeySpam: () => void (status.keySpammerRunning = status.targets.length > 0),
        stopKeySpam: () => void (status.keySpammerRunning = false),
        removeKeySpamTarget: (text) => void status.targets.splice(Number(text), 1),
        setKeySpamChordMode: (text) => void (status.chord = text === '1'),
        pickLocation: () => {},
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
        updateTracker: (text) => update('macro', text),
        startRecording: () => void ((status.state = 'Recording'), (events = [])),
        stopRecording: () => void (status.state = 'Idle'),
        continueRecording: () => void (status.state = 'Recording'),
        undoContinueRecording: () => void (status.canUndoContinue = false),
        startPlayback: () => void (status.state = 'Playing'),
        stopPlayback: () => void (status.state = 'Idle'),
        optimizeMacro: () => {},
        getTrackerStatus: statusReport,
        getMacroEvents: () => eventsText || JSON.stringify(events.map((event, id) => ({ id, ...event }))),
        deleteEvent: (text) => void events.splice(Number(text), 1),
        updateEventTime: (text) => {
            const [index, time] = text.split(',').map(Number);
            events[index].time = time;
        },
        clearProfile: () => void (events = []),
        addProfile: (name) => {
            profiles.names.push(name);
            profiles.current = profiles.names.length - 1;
            events = [];
        },
        deleteProfile: () => {
            profiles.names.splice(profiles.current, 1);
            profiles.current = Math.min(profiles.current, profiles.names.length - 1);
        },
        switchProfile: (text) => void (profiles.current = Number(text)),
        getProfiles: () => JSON.stringify(profiles),
        exportProfile: () => {},
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
            events = [{ time: 0, desc: 'Keyboard VK: 65 (DOWN)' }];
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
        } else {
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
