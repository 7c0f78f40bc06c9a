// The phone's side of the remote: keys, state and the live picture over one WebSocket.
'use strict';

const byId = (id) => document.getElementById(id);
const repeatAfterMs = 450;
const repeatEveryMs = 120;
const fingerEveryMs = 500;     // of keys that do not repeat: only to say that the finger is still there
const slowestRetryMs = 4000;

// --- the connection
let socket = null;
let retryMs = 300;
let retryTimer = 0;
let number = 0;

function send(text) {
  if (socket && socket.readyState === WebSocket.OPEN) {
    socket.send(text);
  }
}

function sendKey(what, key) {
  number = (number + 1) % 1000000000;
  send(`${number} ${what} ${key}`.trimEnd());
}

async function connect() {
  clearTimeout(retryTimer);
  try {
    const answer = await fetch('session', { cache: 'no-store' });
    const session = await answer.json();
    byId('devices').hidden = !session.pairing;
    byId('tools').classList.toggle('four', session.pairing);
    byId('tools').classList.toggle('three', !session.pairing);
    if (!session.paired) {
      showPage('pairing');
      return;
    }
  } catch {
    later();
    return;
  }
  const link = new WebSocket(`ws://${location.host}/socket`);
  link.binaryType = 'blob';
  socket = link;
  link.onopen = () => {
    retryMs = 300;
    showPage('remote');
    byId('away').hidden = true;
    tellView();
  };
  link.onmessage = (message) => {
    if (typeof message.data === 'string') {
      onText(JSON.parse(message.data));
    } else {
      showPicture(message.data);
    }
  };
  link.onclose = () => {
    if (socket === link) {
      socket = null;
      releaseAll();
      later();
    }
  };
}

function later() {
  byId('away').hidden = false;
  clearTimeout(retryTimer);
  retryTimer = setTimeout(connect, retryMs);
  retryMs = Math.min(retryMs * 1.6, slowestRetryMs);
}

function showPage(name) {
  byId('remote').hidden = name !== 'remote';
  byId('pairing').hidden = name !== 'pairing';
  if (name === 'pairing') {
    byId('away').hidden = true;
  }
}

// --- what is playing
const stateNames = { playing: 'Playing', paused: 'Paused', stopped: 'Stopped' };
let shownMarks = '';

function time(ms) {
  if (ms < 0) {
    return '–';
  }
  const seconds = Math.floor(ms / 1000);
  const two = (value) => String(value).padStart(2, '0');
  const hours = Math.floor(seconds / 3600);
  const rest = `${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}`;
  return hours > 0 ? `${hours}:${rest}` : rest.replace(/^0/, '');
}

function onText(message) {
  if (message.ok !== undefined) {
    document.body.dataset.answered = message.ok;
    return;
  }
  send('got state');
  const open = message.title !== '';
  byId('state').textContent = stateNames[message.state] || '–';
  byId('title').textContent = open ? message.title : 'Nothing is playing';
  byId('played').style.width = `${message.percent}%`;
  byId('bar').setAttribute('aria-valuenow', Math.round(message.percent));
  byId('position').textContent = open ? time(message.position) : '';
  byId('duration').textContent = open ? time(message.duration) : '';
  byId('queue').textContent = message.count > 1 ? `${message.index} of ${message.count}` : '';
  const marks = JSON.stringify([message.chapters, message.bookmarks]);
  if (marks !== shownMarks) {
    shownMarks = marks;
    const mark = (kind) => (percent) => {
      const line = document.createElement('i');
      line.className = kind;
      line.style.left = `${percent}%`;
      return line;
    };
    byId('marks').replaceChildren(...message.chapters.map(mark('chapter')), ...message.bookmarks.map(mark('book')));
  }
}

// --- the live picture
let looks = localStorage.getItem('look') !== 'off';
let shownUrl = '';

function tellView() {
  const on = looks && document.visibilityState === 'visible';
  byId('look').setAttribute('aria-pressed', looks);
  byId('view').classList.toggle('closed', !looks);
  byId('picture').hidden = !looks || shownUrl === '';
  byId('hint').hidden = looks && shownUrl !== '';
  byId('hint').textContent = looks ? 'Waiting for the picture' : 'The screen is not shown';
  send(on ? 'view on' : 'view off');
}

function showPicture(blob) {
  const picture = byId('picture');
  const url = URL.createObjectURL(blob);
  picture.onload = picture.onerror = () => {
    if (shownUrl) {
      URL.revokeObjectURL(shownUrl);
    }
    shownUrl = url;
    picture.hidden = !looks;
    byId('hint').hidden = looks;
    document.body.dataset.pictures = Number(document.body.dataset.pictures || 0) + 1;
    send('got picture');
  };
  picture.src = url;
}

byId('look').addEventListener('click', () => {
  looks = !looks;
  localStorage.setItem('look', looks ? 'on' : 'off');
  tellView();
});

document.addEventListener('visibilitychange', () => {
  releaseAll();
  if (document.visibilityState === 'visible' && !socket) {
    retryMs = 300;
    connect();
  } else {
    tellView();
  }
});

// --- keys: down at once, again while it is held, up when the finger leaves
const held = new Map();

function press(button) {
  const key = button.dataset.key;
  if (held.has(key)) {
    return;
  }
  const repeats = button.hasAttribute('data-repeat');
  const hold = { button, first: 0, timer: 0 };
  held.set(key, hold);
  button.classList.add('pressed');
  if (navigator.vibrate && navigator.userActivation?.hasBeenActive) {
    navigator.vibrate(8);
  }
  sendKey('down', key);
  hold.first = setTimeout(() => {
    hold.timer = setInterval(() => sendKey(repeats ? 'hold' : 'keep', key), repeats ? repeatEveryMs : fingerEveryMs);
  }, repeatAfterMs);
}

function release(key) {
  const hold = held.get(key);
  if (hold) {
    held.delete(key);
    clearTimeout(hold.first);
    clearInterval(hold.timer);
    hold.button.classList.remove('pressed');
    sendKey('up', key);
  }
}

function releaseAll() {
  for (const key of [...held.keys()]) {
    release(key);
  }
}

for (const button of document.querySelectorAll('[data-key]')) {
  const key = button.dataset.key;
  button.addEventListener('pointerdown', (event) => {
    event.preventDefault();
    button.setPointerCapture(event.pointerId);
    press(button);
  });
  for (const end of ['pointerup', 'pointercancel', 'lostpointercapture']) {
    button.addEventListener(end, () => release(key));
  }
  button.addEventListener('contextmenu', (event) => event.preventDefault());
  // A screen reader or a keyboard clicks without a pointer.
  button.addEventListener('click', (event) => {
    if (event.detail === 0) {
      press(button);
      release(key);
    }
  });
}

// On a computer its own keys do as well.
const keyboardKeys = {
  ArrowUp: 'up', ArrowDown: 'down', ArrowLeft: 'left', ArrowRight: 'right', Escape: 'exit', ' ': 'playpause',
  PageUp: 'next', PageDown: 'previous',
};
function buttonOf(event) {
  const typing = event.target.tagName === 'INPUT';
  const key = typing || event.ctrlKey || event.altKey || event.metaKey ? undefined : keyboardKeys[event.key];
  return key && !byId('remote').hidden ? document.querySelector(`[data-key="${key}"]`) : null;
}
document.addEventListener('keydown', (event) => {
  const button = buttonOf(event);
  if (button) {
    event.preventDefault();
    press(button);
  }
});
document.addEventListener('keyup', (event) => {
  const button = buttonOf(event);
  if (button) {
    event.preventDefault();
    release(button.dataset.key);
  }
});
window.addEventListener('blur', releaseAll);

// --- typing: the difference to what the field held is typed on the television
let typedText = [];

function type() {
  const text = [...byId('text').value];
  let same = 0;
  while (same < text.length && same < typedText.length && text[same] === typedText[same]) {
    same += 1;
  }
  for (let i = typedText.length; i > same; i -= 1) {
    sendKey('type', '');
  }
  for (const character of text.slice(same)) {
    number = (number + 1) % 1000000000;
    send(`${number} type ${character}`);
  }
  typedText = text;
}

function showTyping(shown) {
  byId('typing').hidden = !shown;
  byId('tools').hidden = shown;
  byId('type').setAttribute('aria-expanded', shown);
  byId('text').value = '';
  typedText = [];
  if (shown) {
    byId('text').focus();
  }
}

byId('text').addEventListener('input', type);
byId('type').addEventListener('click', () => showTyping(byId('typing').hidden));
byId('untype').addEventListener('click', () => showTyping(false));
byId('typing').addEventListener('submit', (event) => {
  event.preventDefault();
  sendKey('down', 'select');
  sendKey('up', 'select');
  showTyping(false);
});
byId('devices').addEventListener('click', () => send('devices'));

// --- pairing
const troubles = {
  403: 'That is not the code. Try again.',
  410: 'The code is no longer valid. Ask for a new one.',
  429: 'Too many attempts. Wait some minutes.',
};

async function ask(path, body) {
  try {
    const answer = await fetch(path, { method: 'POST', body });
    byId('trouble').textContent = answer.ok ? '' : troubles[answer.status] || 'The player refused.';
    return answer;
  } catch {
    byId('trouble').textContent = 'The player does not answer.';
    return { ok: false, status: 0 };
  }
}

byId('show').addEventListener('click', async () => {
  if ((await ask('code', '')).ok) {
    byId('code').hidden = false;
    byId('show').hidden = true;
    byId('digits').focus();
  }
});
byId('code').addEventListener('submit', async (event) => {
  event.preventDefault();
  const answer = await ask('pair', byId('digits').value.replace(/\s/g, ''));
  byId('digits').value = '';
  if (answer.ok) {
    connect();
  } else if (answer.status !== 403) {
    byId('code').hidden = true;
    byId('show').hidden = false;
  }
});

tellView();
connect();
