// A stand-in for the program, run inside the page before the page's own script: the web-view library's page script with
// its promise table, the bound functions, and a scripted program behind them. `window.host` is the tests' handle on it.
(() => {
  const promises = {}; // the library's own table, which it never empties
  const host = {
    promises,
    calls: [], // [name, ArgText] of every call but the polls
    polls: 0,
    inFlight: 0, // polls asked and not answered
    mostInFlight: 0,
    delay: 0, // ms before an answer
    holding: false, // answers wait in `held` until letGo()
    held: [],
    letGo() {
      host.holding = false;
      for (const answer of host.held.splice(0)) answer();
    },
    failing: {}, // name -> text: calls that are rejected
    silent: {}, // name -> true: calls that are never answered
    shortStatus: false,
    events: [],
    profiles: {
      current: 0,
      names: ['Default Tracking Profile'],
      cap: -1,
      defaultName: 'Default Tracking Profile',
    },
    status: {
      state: 'Idle',
      restore: [],
      hkRec: 'F8',
      hkPlay: 'F7',
      hkAuto: 'F6',
      hkKeySpam: 'F9',
      hkUnlock: 'F10',
      lockOn: true,
      unlocked: true,
      keySpamTargets: ['Space'],
      keySpamChord: false,
      ksCap: -1,
      reassigning: '',
      panelHover: false,
      autoClicking: false,
      keySpamming: false,
      canUndoContinue: false,
    },
    settings: {
      sh: 0, sm: 0, ss: 0, sms: 5, sbtn: 0, stype: 0, rptMode: 1, rptTimes: 10, locMode: 0, fixedX: 0, fixedY: 0,
      tmv: true, tclk: true, tscr: true, tkey: true, trel: false, tspd: 1, tloop: false, tloopMs: 500,
      ksh: 0, ksm: 0, kss: 0, ksms: 5, ksRptMode: 1, ksRptTimes: 10, holdAuto: false, holdKeySpam: false,
    }, // prettier-ignore
  };
  host.appSettings = {
    alwaysOnTop: false,
    launchOnStartup: false,
    startMinimized: false,
    hotkeysEnabled: true,
    hotkeyLock: true,
    stopToolsWithMacro: true,
    disableAnimations: false,
    showWarnings: false, // the tests of warnings turn them on
    seenWarnings: [],
    minimizedPanels: [],
    panelOrder: [],
  };
  host.importOutcome = { outcome: 'cancelled' }; // what the import dialog comes to
  host.importName = 'Farm (Imported)';
  host.importHasSettings = true;
  host.pending = { outcome: 'none' }; // the held macro
  host.pendingSummary = {}; // what is known of it besides
  const { status, settings, profiles, appSettings } = host;
  const fields = (text, keys) => text.split(',').forEach((value, i) => (settings[keys[i]] = Number(value)));
  const truths = (text, keys) =>
    text.split(',').forEach((value, i) => (settings[keys[i]] = value === 'true'));
  const statusText = () => {
    const { state, restore, ...rest } = status;
    const whole = { state, count: host.events.length, restore, ...rest };
    if (!host.shortStatus) return JSON.stringify(whole);
    for (const key of ['hkUnlock', 'lockOn', 'unlocked', 'canUndoContinue']) delete whole[key];
    return JSON.stringify({ ...whole, ksCap: 0 });
  };

  const commands = {
    updateSpammer: (text) =>
      fields(text, ['sh', 'sm', 'ss', 'sms', 'sbtn', 'stype', 'rptMode', 'rptTimes', 'locMode']),
    startSpammer: () => void (status.autoClicking = true),
    stopSpammer: () => void (status.autoClicking = false),
    updateKeySpam: (text) => fields(text, ['ksh', 'ksm', 'kss', 'ksms', 'ksRptMode', 'ksRptTimes']),
    startKeySpam: () => void (status.keySpamming = status.keySpamTargets.length > 0),
    stopKeySpam: () => void (status.keySpamming = false),
    removeKeySpamTarget: (text) => void status.keySpamTargets.splice(Number(text), 1),
    setKeySpamChordMode: (text) => void (status.keySpamChord = text === '1'),
    pickLocation: () => {},
    setHoldMode: (text) => {
      const [tool, on] = text.split(',');
      settings[tool === 'auto' ? 'holdAuto' : 'holdKeySpam'] = on === '1';
    },
    resetHotkeys: () => {
      Object.assign(status, {
        hkRec: 'F8',
        hkPlay: 'F7',
        hkAuto: 'F6',
        hkKeySpam: 'F9',
        hkUnlock: 'F10',
      });
    },
    updateTracker: (text) => {
      const parts = text.split(',');
      truths(parts.slice(0, 5).join(','), ['tmv', 'tclk', 'tscr', 'tkey', 'trel']);
      settings.tspd = Number(parts[5]);
      settings.tloop = parts[6] === 'true';
      settings.tloopMs = Number(parts[7]);
    },
    startRecording: () => void ((status.state = 'Recording'), (host.events = [])),
    stopRecording: () => void (status.state = 'Idle'),
    continueRecording: () => void (status.state = 'Recording'),
    undoContinueRecording: () => void (status.canUndoContinue = false),
    startPlayback: () => void (status.state = 'Playing'),
    stopPlayback: () => void (status.state = 'Idle'),
    optimizeMacro: () => {},
    getTrackerStatus: statusText,
    getMacroEvents: () =>
      host.eventsText ?? JSON.stringify(host.events.map((event, id) => ({ id, ...event }))),
    deleteEvent: (text) => void host.events.splice(Number(text), 1),
    updateEventTime: (text) => {
      const [index, time] = text.split(',').map(Number);
      host.events[index].time = time;
    },
    clearProfile: () => void (host.events = []),
    addProfile: (name) => {
      profiles.names.push(name);
      profiles.current = profiles.names.length - 1;
      host.events = [];
    },
    deleteProfile: () => {
      profiles.names.splice(profiles.current, 1);
      profiles.current = Math.min(profiles.current, profiles.names.length - 1);
    },
    switchProfile: (text) => void (profiles.current = Number(text)),
    getProfiles: () => JSON.stringify(profiles),
    exportProfile: () => {},
    importProfile: () => {
      if (host.importOutcome.outcome === 'pending') host.pending = host.importOutcome;
      if (host.importOutcome.outcome === 'imported') host.import();
      return JSON.stringify(host.importOutcome);
    },
    confirmMacroImport: (id) => {
      if (host.pending.pendingId !== id) return;
      host.pending = { outcome: 'none' };
      host.import();
      window.onProfileImported?.();
    },
    cancelMacroImport: (id) => {
      if (host.pending.pendingId === id) host.pending = { outcome: 'none' };
    },
    getPendingMacroImport: () => JSON.stringify(host.pending),
    getPendingMacroSummary: () => JSON.stringify(host.pendingSummary),
    getPendingThemeAlert: () => JSON.stringify(host.pendingAlert ?? ''),
    getAppSettings: () => JSON.stringify(appSettings),
    setAppSetting: (text) => {
      const [key, value] = text.split(',');
      const on = value === '1';
      if (key.startsWith('min:')) {
        const id = key.slice(4);
        const others = appSettings.minimizedPanels.filter((other) => other !== id);
        appSettings.minimizedPanels = on ? [...others, id] : others;
        return;
      }
      appSettings[key] = on;
      if (key === 'hotkeyLock') {
        status.lockOn = on;
        status.unlocked = true;
      }
    },
    markWarningSeen: (id) => void appSettings.seenWarnings.push(id),
    setPanelOrder: (text) => void (appSettings.panelOrder = text === '' ? [] : text.split(',')),
    resizeWindow: () => {},
    openLink: () => {},
    getSettings: () => JSON.stringify(settings),
    reassignKey: (text) => void (status.reassigning = text),
  };
  host.commands = commands;
  // As the program adds a profile from a file: without settings in it, the tools are back at their defaults.
  host.import = () => {
    commands.addProfile(host.importName);
    host.events = [{ time: 0, desc: 'Keyboard VK: 65 (DOWN)' }];
    if (!host.importHasSettings) Object.assign(settings, { sms: 5, rptMode: 1, ksms: 5 });
  };

  function receive(message) {
    const { id, method, params } = JSON.parse(message);
    // As the program decodes a request: brackets and quotation marks go, nothing is unescaped.
    const argText = JSON.stringify(params).replace(/[[\]"]/g, '');
    if (method === 'getTrackerStatus') {
      host.polls++;
      host.mostInFlight = Math.max(host.mostInFlight, ++host.inFlight);
    } else {
      host.calls.push([method, argText]);
    }
    if (host.silent[method]) return;
    const answer = () => {
      if (method === 'getTrackerStatus') host.inFlight--;
      if (method in host.failing) {
        window.__webview__.onReply(id, 1, JSON.stringify(host.failing[method]));
        return;
      }
      const text = commands[method](argText);
      window.__webview__.onReply(id, 0, text === undefined ? undefined : text);
    };
    if (host.holding) host.held.push(answer);
    else if (host.delay > 0) setTimeout(answer, host.delay);
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
