// The Vexar console page. The server filters; the page shows what it is
// sent. Every text that came from a logger is set with textContent, never
// parsed as HTML.
'use strict';

const LEVELS = ['FATAL', 'SEVERE', 'ERROR', 'WARNING', 'NOTICE', 'INFO', 'DEBUG', 'TRACE'];
const VERBOSITIES = ['SILENT', 'ERROR', 'WARNING', 'STATUS_LOCAL', 'STATUS_REMOTE', 'STATUS_ALL'];
const CATEGORIES = ['ALL', 'PLATFORM', 'COMMUNICATION', 'DATABASE', 'ENTITIES', 'API'];
const FORMATS = ['DEFAULT', 'TIMESTAMPED', 'VERBOSE', 'VERBOSE_TIMESTAMPED', 'DEBUG', 'MINIMAL', 'MAXIMAL'];
const FILTER_FIELDS = ['level', 'app', 'category', 'grep', 'exclude-category', 'exclude-grep', 'since', 'until'];
const ROW_HEIGHT = 20;
const ROWS_KEPT = 200000;   // messages the page keeps to scroll back through
const OVERSCAN = 10;        // rows drawn beyond the visible ones
const RATE_POINTS = 60;
const TOKEN_KEY = 'vexarToken';

const $ = (id) => document.getElementById(id);
const view = {
  rows: [],               // the messages held, oldest first
  following: true,        // scrolled to the end: new rows keep it there
  unseen: 0,              // rows that arrived while paused
  drawPending: false,
  source: null,
  pool: [],
  rates: Object.fromEntries([...LEVELS, 'other'].map((l) => [l, []])),
};
// What tests and people may read from the console (devtools).
const stats = { received: 0, history: 0, lost: 0, batches: 0 };
window.vexarConsole = { stats, rowsHeld: () => view.rows.length, rows: () => view.rows };

function element(tag, className, text) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  if (text !== undefined) node.textContent = text;
  return node;
}

function select(name, values, chosen) {
  const node = element('select');
  node.name = name;
  for (const value of values) node.append(new Option(value, value, false, value === chosen));
  return node;
}

// ---- filters, in the form and in the page's URL --------------------------

function filterParams() {
  const params = new URLSearchParams();
  for (const [name, value] of new FormData($('filters'))) {
    if (value.trim() !== '') params.append(name, value.trim());
  }
  return params;
}

function fillFormFromUrl() {
  const params = new URLSearchParams(location.search);
  for (const name of FILTER_FIELDS) {
    const field = $('filters').elements[name];
    if (field && params.has(name)) field.value = params.get(name);
  }
}

function applyFilters(event) {
  if (event) event.preventDefault();
  const params = filterParams();
  const query = params.toString();
  history.replaceState(null, '', query ? '?' + query : location.pathname);
  connect(params);
}

// ---- the log table: a window of pooled rows over the held messages -------

function levelClass(message) {
  return 'lvl-' + (LEVELS.includes(message.levelName) ? message.levelName : 'other');
}

function localTime(iso) {
  const date = new Date(iso.slice(0, 23) + 'Z');
  const pad = (n, w = 2) => String(n).padStart(w, '0');
  return `${pad(date.getHours())}:${pad(date.getMinutes())}:${pad(date.getSeconds())}.${pad(date.getMilliseconds(), 3)}`;
}

function makeRow() {
  const row = element('div', 'row');
  for (const name of ['time', 'app', 'level', 'category', 'message']) row.append(element('span', name));
  return row;
}

function fillRow(row, message) {
  const [time, app, level, category, text] = row.children;
  row.className = message.history ? 'row history' : 'row';
  time.textContent = localTime(message.time);
  time.title = message.time;
  app.textContent = message.label;
  level.textContent = message.levelName ?? String(message.level);
  level.className = 'level ' + levelClass(message);
  category.textContent = message.category;
  text.textContent = message.message;
  text.title = message.message.length > 80 ? message.message : '';
}

function addRows(messages) {
  for (const message of messages) view.rows.push(message);
  if (view.rows.length > ROWS_KEPT) {
    const dropped = view.rows.length - ROWS_KEPT;
    view.rows.splice(0, dropped);
    // What was shown stays where it was on the screen.
    if (!view.following) $('scroller').scrollTop -= dropped * ROW_HEIGHT;
  }
  if (!view.following) view.unseen += messages.length;
  scheduleDraw();
}

function scheduleDraw() {
  if (view.drawPending) return;
  view.drawPending = true;
  requestAnimationFrame(draw);
}

function draw() {
  view.drawPending = false;
  const scroller = $('scroller');
  $('spacer').style.height = view.rows.length * ROW_HEIGHT + 'px';
  if (view.following) scroller.scrollTop = scroller.scrollHeight;
  const visible = Math.ceil(scroller.clientHeight / ROW_HEIGHT) + 2 * OVERSCAN;
  while (view.pool.length < visible) view.pool.push($('rows').appendChild(makeRow()));
  while (view.pool.length > visible) view.pool.pop().remove();
  const first = Math.max(0, Math.floor(scroller.scrollTop / ROW_HEIGHT) - OVERSCAN);
  $('rows').style.top = first * ROW_HEIGHT + 'px';
  view.pool.forEach((row, i) => {
    const message = view.rows[first + i];
    row.hidden = message === undefined;
    if (message) fillRow(row, message);
  });
  $('resume').hidden = view.following;
  $('resume').textContent = `Paused (${view.unseen} new): resume live`;
  $('counts').textContent = `${view.rows.length} shown` + (stats.lost ? `, ${stats.lost} lost` : '');
}

function onScroll() {
  const scroller = $('scroller');
  const atEnd = scroller.scrollTop + scroller.clientHeight >= scroller.scrollHeight - 2 * ROW_HEIGHT;
  if (atEnd && !view.following) view.unseen = 0;
  view.following = atEnd;
  scheduleDraw();
}

function resume() {
  view.following = true;
  view.unseen = 0;
  scheduleDraw();
}

// ---- the stream: history first when asked, then live ---------------------

function setStatus(text) { $('status').textContent = text; }

function connect(params) {
  if (view.source) view.source.close();
  view.source = null;
  view.rows = [];
  view.following = true;
  view.unseen = 0;
  Object.assign(stats, { received: 0, history: 0, lost: 0, batches: 0 });
  scheduleDraw();
  if (params.has('until')) return loadRange(params);
  openStream(params);
}

function openStream(params) {
  const source = new EventSource('/api/stream?' + params.toString());
  view.source = source;
  setStatus(params.has('since') ? 'reading history' : 'live');
  source.addEventListener('logs', (event) => {
    const messages = JSON.parse(event.data);
    stats.received += messages.length;
    stats.batches += 1;
    addRows(messages);
  });
  source.addEventListener('history', (event) => {
    const messages = JSON.parse(event.data);
    stats.history += messages.length;
    addRows(messages);
  });
  source.addEventListener('historyEnd', (event) => {
    const end = JSON.parse(event.data);
    setStatus(`history: ${end.count} messages${end.truncated ? ' (the newest only)' : ''}, then live`);
  });
  source.addEventListener('lost', (event) => {
    stats.lost += JSON.parse(event.data).lost;
    scheduleDraw();
  });
  source.addEventListener('rates', (event) => addRates(JSON.parse(event.data)));
  source.addEventListener('problem', (event) => setStatus('history failed: ' + JSON.parse(event.data).error));
  // The browser would ask again with the same address, history and all:
  // the page goes on live by itself and says that it missed the break.
  source.addEventListener('error', () => {
    if (view.source !== source) return;
    source.close();
    setStatus('connection lost: reconnecting');
    setTimeout(() => {
      if (view.source !== source) return;
      const live = new URLSearchParams(params);
      live.delete('since');
      openStream(live);
      setStatus('live again; messages of the break are not shown');
    }, 2000);
  });
}

// A closed range: recorded messages only.
async function loadRange(params) {
  setStatus('reading history');
  const response = await fetch('/api/logs?' + params.toString());
  const body = await response.json();
  if (!response.ok) return setStatus('history failed: ' + body.error);
  stats.history = body.messages.length;
  addRows(body.messages);
  setStatus(`history: ${body.messages.length} messages (not live: "To" is set)`);
}

// ---- rates ----------------------------------------------------------------

function addRates(counts) {
  for (const level of Object.keys(view.rates)) {
    const points = view.rates[level];
    points.push(counts[level] ?? 0);
    if (points.length > RATE_POINTS) points.shift();
  }
  drawRates();
}

function drawRates() {
  const box = $('rates');
  if (!box.children.length) {
    for (const level of Object.keys(view.rates)) {
      box.append(element('span', 'lvl-' + level, level), element('canvas'), element('span', 'rate'));
      box.lastChild.id = 'rate-' + level;
      box.lastChild.previousSibling.id = 'spark-' + level;
    }
  }
  const colours = getComputedStyle(document.documentElement);
  for (const [level, points] of Object.entries(view.rates)) {
    const canvas = $('spark-' + level);
    const width = (canvas.width = canvas.clientWidth || 200);
    const height = (canvas.height = 18);
    const context = canvas.getContext('2d');
    const highest = Math.max(1, ...points);
    context.strokeStyle = colours.getPropertyValue('--' + level.toLowerCase()).trim() || '#ccc';
    context.beginPath();
    points.forEach((value, i) => {
      const x = width - (points.length - 1 - i) * (width / (RATE_POINTS - 1));
      const y = height - 1 - (value / highest) * (height - 2);
      if (i === 0) context.moveTo(x, y);
      else context.lineTo(x, y);
    });
    context.stroke();
    $('rate-' + level).textContent = String(points.at(-1) ?? 0);
  }
}

// ---- applications and their controls ---------------------------------------

function token() { return sessionStorage.getItem(TOKEN_KEY); }

function askForToken() {
  $('token-box').hidden = false;
  $('token').focus();
}

function saveToken(event) {
  event.preventDefault();
  const value = $('token').value.trim();
  if (value) sessionStorage.setItem(TOKEN_KEY, value);
  $('token-box').hidden = !!value;
}

// The address printed by vexar web carries the token after '#': kept for
// this tab and taken out of the address bar.
function takeTokenFromAddress() {
  const match = location.hash.match(/token=([^&]+)/);
  if (!match) return;
  sessionStorage.setItem(TOKEN_KEY, decodeURIComponent(match[1]));
  history.replaceState(null, '', location.pathname + location.search);
}

async function sendControl(id, what, body, answer) {
  answer.className = 'answer';
  answer.textContent = 'sending…';
  const headers = { 'Content-Type': 'application/json' };
  if (token()) headers['X-Vexar-Token'] = token();
  let response;
  try {
    response = await fetch(`/api/apps/${encodeURIComponent(id)}/${what}`,
      { method: 'POST', headers, body: JSON.stringify(body) });
  } catch (error) {
    answer.textContent = 'NO_ANSWER: the server did not answer';
    answer.classList.add('NO_ANSWER');
    return;
  }
  const reply = await response.json();
  if (response.status === 401 || response.status === 403) {
    sessionStorage.removeItem(TOKEN_KEY);
    askForToken();
    answer.textContent = `REFUSED: ${reply.error}`;
    answer.classList.add('REFUSED');
    return;
  }
  const result = reply.result ?? 'ERROR';
  answer.textContent = result + (reply.message ? ': ' + reply.message : '') + (reply.error ? ': ' + reply.error : '');
  answer.classList.add(result);
}

function control(card, label, fields, what, bodyOf) {
  const button = element('button', '', label);
  button.type = 'button';
  button.dataset.control = what;
  button.addEventListener('click', () => sendControl(card.dataset.id, what, bodyOf(), card.querySelector('.answer')));
  const group = element('span');
  group.append(...fields, button);
  return group;
}

function makeCard(app) {
  const card = element('div', 'app-card');
  card.dataset.id = app.id;
  // The controls start at what the logger has now.
  const level = select('level', LEVELS, levelName(app.filterLevel));
  const category = select('category', CATEGORIES, 'ALL');
  const verbosity = select('verbosity', VERBOSITIES, 'WARNING');
  const format = select('format', FORMATS, app.printFormat);
  const controls = element('div', 'controls');
  controls.append(
    control(card, 'Set level', [level], 'level', () => ({ level: level.value })),
    control(card, 'Set verbosity', [category, verbosity], 'verbosity',
      () => ({ category: category.value, verbosity: verbosity.value })),
    control(card, 'Set format', [format], 'format', () => ({ format: format.value })));
  card.append(element('div', 'title'), element('div', 'facts'), controls, element('div', 'answer'));
  return card;
}

function liveness(app) {
  if (app.gone) return 'gone';
  if (app.lastMessageAgo === null) return 'no messages yet';
  return app.lastMessageAgo < 5 ? 'logging' : `quiet for ${Math.round(app.lastMessageAgo)} s`;
}

function updateCard(card, app) {
  card.classList.toggle('gone', app.gone);
  card.querySelector('.title').textContent = app.label;
  const verbosities = Object.entries(app.verbosities).map(([c, v]) => `${c} ${v}`).join(', ');
  const dropped = app.counts ? app.counts.dropped : '-';
  card.querySelector('.facts').textContent =
    `${app.state}${app.gone ? ' (gone)' : ''} · ${liveness(app)} · level ${levelName(app.filterLevel)}` +
    ` · dropped ${dropped} · ${app.printFormat} · ${verbosities}`;
  card.dataset.state = app.state;
  card.dataset.level = levelName(app.filterLevel);
}

function levelName(value) {
  return value % 100 === 0 && value >= 100 && value <= 800 ? LEVELS[value / 100 - 1] : String(value);
}

async function refreshApps() {
  try {
    const response = await fetch('/api/apps');
    const apps = await response.json();
    const box = $('apps');
    const seen = new Set();
    for (const app of apps) {
      seen.add(app.id);
      let card = box.querySelector(`[data-id="${CSS.escape(app.id)}"]`);
      if (!card) card = box.appendChild(makeCard(app));
      updateCard(card, app);
    }
    for (const card of [...box.children]) if (!seen.has(card.dataset.id)) card.remove();
    if (!apps.length) box.textContent = 'no loggers seen yet';
    else if (box.firstChild.nodeType === Node.TEXT_NODE) box.firstChild.remove();
  } catch (error) {
    setStatus('the server does not answer');
  }
}

async function showInfo() {
  const info = await (await fetch('/api/info')).json();
  $('domain').textContent = `domain ${info.domain}` + (info.database ? ` · ${info.database}` : '');
  $('history-fields').hidden = !info.database;
}

function start() {
  takeTokenFromAddress();
  fillFormFromUrl();
  $('filters').addEventListener('submit', applyFilters);
  $('token-form').addEventListener('submit', saveToken);
  $('scroller').addEventListener('scroll', onScroll, { passive: true });
  $('resume').addEventListener('click', resume);
  window.addEventListener('resize', scheduleDraw);
  showInfo();
  applyFilters();
  refreshApps();
  setInterval(refreshApps, 1000);
  if (!token()) askForToken();
}

document.addEventListener('DOMContentLoaded', start);
