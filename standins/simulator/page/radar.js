'use strict';

// The radar page: asks for the state four times a second and draws it at the screen's own pace, a quarter of
// a second behind, so that aircraft move smoothly.

const POLL_MS = 250;
const TRAIL_POINT_NM = 0.02;
const TRAIL_POINTS = 240;
const NM_PER_DEG = 60;
const WING_SPAN_NM = 0.0185; // 34 m, an airliner of middle size
const LIGHTS = [['nav', 0], ['beacon', 1], ['landing', 2], ['taxi', 3], ['strobe', 4], ['logo', 8], ['cabin', 9]];
const BIT = Object.fromEntries(LIGHTS.map(([name, bit]) => [name, 1 << bit]));
// Altitude in feet and its colour.
const RAMP = [[0, [214, 77, 39]], [5000, [224, 150, 20]], [10000, [60, 155, 80]], [20000, [20, 130, 190]], [40000, [110, 70, 190]]];

const $ = id => document.getElementById(id);
const map = $('map');
const pen = map.getContext('2d');

let state = null;          // the last answer
let before = new Map();    // objects of the answer before, by id
let stateAt = 0;
let lost = false;
const trails = new Map();  // id to [lat, lon, alt, on ground]
const shown = { labels: true, trails: true };
const view = { lat: 0, lon: 0, pxPerNm: 12, placed: false, follow: true };
let selected = null;
let history = [];

// --- projection ---

const lonScale = () => Math.cos(view.lat * Math.PI / 180);
const wrapped = deg => deg - 360 * Math.round(deg / 360);

function toScreen(lat, lon) {
  return [map.clientWidth / 2 + wrapped(lon - view.lon) * lonScale() * NM_PER_DEG * view.pxPerNm,
          map.clientHeight / 2 - (lat - view.lat) * NM_PER_DEG * view.pxPerNm];
}

function toPlace(x, y) {
  return [view.lat - (y - map.clientHeight / 2) / NM_PER_DEG / view.pxPerNm,
          wrapped(view.lon + (x - map.clientWidth / 2) / NM_PER_DEG / view.pxPerNm / lonScale())];
}

function distanceNm(a, b) {
  const rad = Math.PI / 180;
  const h = Math.sin((b.lat - a.lat) * rad / 2) ** 2 +
            Math.cos(a.lat * rad) * Math.cos(b.lat * rad) * Math.sin((b.lon - a.lon) * rad / 2) ** 2;
  return 2 * 3440.065 * Math.asin(Math.min(1, Math.sqrt(h)));
}

// --- colours and words ---

function altitudeColour(feet, alpha = 1) {
  let above = RAMP.findIndex(([alt]) => alt > feet);
  if (above < 0) above = RAMP.length - 1;
  const [loAlt, lo] = RAMP[Math.max(0, above - 1)];
  const [hiAlt, hi] = RAMP[above];
  const share = hiAlt > loAlt ? Math.min(1, Math.max(0, (feet - loAlt) / (hiAlt - loAlt))) : 0;
  const mixed = lo.map((value, i) => Math.round(value + (hi[i] - value) * share));
  return `rgba(${mixed.join(',')},${alpha})`;
}

const isStatic = object => object.tail.endsWith('*');
const colourOf = object => isStatic(object) ? '#b9c2cd' : object.ground ? '#7a8797' : altitudeColour(object.alt);
const feet = value => Math.round(value).toLocaleString('en-US');

function altitudeText(object) {
  if (object.ground) return 'ground';
  return object.alt >= 18000 ? 'FL' + String(Math.round(object.alt / 100)).padStart(3, '0') : feet(object.alt) + ' ft';
}

const climbMark = object => object.ground || Math.abs(object.vs) < 250 ? '' : object.vs > 0 ? ' ↑' : ' ↓';

// --- drawing ---

function resized(canvas) {
  const ratio = window.devicePixelRatio || 1;
  const width = Math.round(canvas.clientWidth * ratio);
  const height = Math.round(canvas.clientHeight * ratio);
  if (canvas.width !== width || canvas.height !== height) {
    canvas.width = width;
    canvas.height = height;
  }
  const context = canvas.getContext('2d');
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  return context;
}

function ringStep() {
  const wanted = 110 / view.pxPerNm;
  const decade = 10 ** Math.floor(Math.log10(wanted));
  return decade * [1, 2, 5, 10].find(step => step * decade >= wanted);
}

function drawRings(user) {
  const [x, y] = toScreen(user.lat, user.lon);
  const step = ringStep();
  const reach = Math.hypot(map.clientWidth, map.clientHeight) / view.pxPerNm +
                distanceNm(user, { lat: view.lat, lon: view.lon });
  pen.lineWidth = 1;
  pen.textAlign = 'center';
  pen.font = '10px system-ui, "DejaVu Sans", sans-serif';
  for (let ring = 1, nm = step; ring <= 40 && nm < reach; ++ring, nm = ring * step) {
    pen.strokeStyle = ring % 5 === 0 ? '#b9c6d4' : '#d5dee7';
    pen.beginPath();
    pen.arc(x, y, nm * view.pxPerNm, 0, 2 * Math.PI);
    pen.stroke();
    pen.fillStyle = '#8392a5';
    const label = step < 1 ? nm.toFixed(nm < 0.1 ? 2 : 1) : String(Math.round(nm));
    pen.fillText(label + ' nm', x, y - nm * view.pxPerNm + 12);
  }
  pen.strokeStyle = '#dfe6ed';
  pen.beginPath();
  pen.moveTo(x, 0); pen.lineTo(x, map.clientHeight);
  pen.moveTo(0, y); pen.lineTo(map.clientWidth, y);
  pen.stroke();
}

function drawAirports() {
  pen.font = '11px system-ui, "DejaVu Sans", sans-serif';
  for (const airport of state.airports) {
    const [x, y] = toScreen(airport.lat, airport.lon);
    pen.strokeStyle = '#9aa8b8';
    pen.lineWidth = 1.5;
    pen.strokeRect(x - 4, y - 4, 8, 8);
    pen.fillStyle = '#7e8da0';
    pen.textAlign = 'left';
    pen.fillText(`${feet(airport.elevation)} ft`, x + 9, y + 16);
  }
}

function drawTrail(id, object) {
  const points = trails.get(id);
  if (!points || points.length < 1) return;
  pen.lineWidth = id === selected ? 2.5 : 1.5;
  let [x, y] = toScreen(points[0][0], points[0][1]);
  for (let i = 1; i <= points.length; ++i) {
    const point = i < points.length ? points[i] : [object.lat, object.lon, object.alt, object.ground];
    const [nextX, nextY] = toScreen(point[0], point[1]);
    const strength = id === selected ? 0.9 : 0.12 + 0.5 * i / points.length;
    pen.strokeStyle = point[3] ? `rgba(122,135,151,${strength})` : altitudeColour(point[2], strength);
    pen.beginPath();
    pen.moveTo(x, y);
    pen.lineTo(nextX, nextY);
    pen.stroke();
    [x, y] = [nextX, nextY];
  }
}

// An aircraft seen from above, nose up, about 20 units long.
const SILHOUETTE = new Path2D('M0-10 C1.2-9 1.5-7 1.5-5 L1.5-2.5 L10 3 L10 5 L1.5 2.4 L1.2 7 L4 9 L4 10.3 L0 9.2 ' +
                              'L-4 10.3 L-4 9 L-1.2 7 L-1.5 2.4 L-10 5 L-10 3 L-1.5-2.5 L-1.5-5 C-1.5-7-1.2-9 0-10 Z');

// Close up, aircraft are drawn as large as they are: that shows who is in whose way.
function glyphScale(object) {
  const base = Math.min(1.5, Math.max(0.62, 0.55 + Math.log10(1 + view.pxPerNm) * 0.35));
  return Math.max(isStatic(object) || object.ground ? base * 0.72 : base, WING_SPAN_NM * view.pxPerNm / 20);
}

function drawLights(object, scale, now) {
  const dot = (x, y, radius, colour) => {
    pen.fillStyle = colour;
    pen.beginPath();
    pen.arc(x, y, radius, 0, 2 * Math.PI);
    pen.fill();
  };
  if (object.lights & BIT.landing) {
    const beam = pen.createLinearGradient(0, -9, 0, -30);
    beam.addColorStop(0, 'rgba(242,183,5,0.75)');
    beam.addColorStop(1, 'rgba(242,183,5,0)');
    pen.fillStyle = beam;
    pen.beginPath();
    pen.moveTo(0, -8); pen.lineTo(-6, -30); pen.lineTo(6, -30);
    pen.fill();
  }
  if (object.lights & BIT.taxi) dot(0, -11, 1.7, '#f2b705');
  if (object.lights & BIT.nav) {
    dot(-10, 4, 1.6, '#d62828');
    dot(10, 4, 1.6, '#2a9d4a');
  }
  if (object.lights & BIT.beacon && (now + object.id * 137) % 1000 < 250) dot(0, 0, 2.6, '#ff2d2d');
  if (object.lights & BIT.strobe && (now + object.id * 211) % 1200 < 120) {
    dot(-10, 4, 3, 'rgba(255,255,255,0.95)');
    dot(10, 4, 3, 'rgba(255,255,255,0.95)');
  }
  if (object.gear && !object.ground) {
    pen.strokeStyle = '#1f2a37';
    pen.lineWidth = 1.4 / scale;
    pen.beginPath();
    pen.moveTo(0, 10.5); pen.lineTo(0, 14);
    pen.moveTo(-3.5, 14); pen.lineTo(3.5, 14);
    pen.stroke();
  }
}

function drawAircraft(object, now) {
  const [x, y] = toScreen(object.lat, object.lon);
  if (x < -40 || y < -40 || x > map.clientWidth + 40 || y > map.clientHeight + 40) return;
  const scale = glyphScale(object);
  if (object.id === selected) {
    pen.strokeStyle = '#1463c7';
    pen.lineWidth = 2;
    pen.beginPath();
    pen.arc(x, y, 17 * scale, 0, 2 * Math.PI);
    pen.stroke();
  }
  pen.save();
  pen.translate(x, y);
  pen.rotate(object.heading * Math.PI / 180);
  pen.scale(scale, scale);
  pen.fillStyle = colourOf(object);
  pen.strokeStyle = 'rgba(255,255,255,0.9)';
  pen.lineWidth = 1.2;
  pen.stroke(SILHOUETTE);
  pen.fill(SILHOUETTE);
  drawLights(object, scale, now);
  pen.restore();
}

function drawUser(user) {
  const [x, y] = toScreen(user.lat, user.lon);
  pen.strokeStyle = '#1463c7';
  pen.lineWidth = 3;
  pen.fillStyle = 'rgba(255,255,255,0.8)';
  pen.beginPath();
  pen.arc(x, y, 13, 0, 2 * Math.PI);
  pen.fill();
  pen.stroke();
  pen.save();
  pen.translate(x, y);
  pen.rotate(user.heading * Math.PI / 180);
  pen.scale(0.85, 0.85);
  pen.fillStyle = '#1463c7';
  pen.fill(SILHOUETTE);
  pen.restore();
}

// Labels that would cover one another are left out: the selected one first, then those in the air.
function drawLabels(objects) {
  const taken = [];
  const rank = object => object.id === selected ? 0 : isStatic(object) ? 3 : object.ground ? 2 : 1;
  const sorted = [...objects].sort((a, b) => rank(a) - rank(b) || a.id - b.id);
  const close = view.pxPerNm > 60;
  for (const object of sorted) {
    const [x, y] = toScreen(object.lat, object.lon);
    if (x < 0 || y < 0 || x > map.clientWidth || y > map.clientHeight) continue;
    if (rank(object) === 3 && view.pxPerNm < 150) continue;
    const lines = [object.tail || '#' + object.id];
    if (rank(object) < 3)
      lines.push(object.ground ? `${Math.round(object.kt)} kt` : `${altitudeText(object)}${climbMark(object)}  ${Math.round(object.kt)} kt`);
    if (close || object.id === selected) lines.push(object.title.length > 34 ? object.title.slice(0, 33) + '…' : object.title);
    pen.font = '600 11px system-ui, "DejaVu Sans", sans-serif';
    const width = Math.max(...lines.map(line => pen.measureText(line).width));
    const box = { left: x + 15, top: y - 14, right: x + 19 + width, bottom: y - 14 + lines.length * 13 };
    const covered = taken.some(other => box.left < other.right && other.left < box.right && box.top < other.bottom && other.top < box.bottom);
    if (covered && object.id !== selected) continue;
    taken.push(box);
    pen.textAlign = 'left';
    pen.lineJoin = 'round';
    lines.forEach((line, i) => {
      pen.font = `${i === 0 ? '600 ' : ''}11px system-ui, "DejaVu Sans", sans-serif`;
      pen.lineWidth = 3;
      pen.strokeStyle = 'rgba(243,246,249,0.9)';
      pen.strokeText(line, box.left, box.top + 10 + i * 13);
      pen.fillStyle = i === 0 ? '#1f2a37' : '#66758a';
      pen.fillText(line, box.left, box.top + 10 + i * 13);
    });
  }
}

function between(object, share) {
  const from = before.get(object.id);
  if (!from || distanceNm(from, object) > 3) return object;
  const turn = wrapped(object.heading - from.heading);
  return { ...object,
           lat: from.lat + (object.lat - from.lat) * share,
           lon: from.lon + wrapped(object.lon - from.lon) * share,
           heading: from.heading + turn * share };
}

function draw(now) {
  requestAnimationFrame(draw);
  resized(map);
  pen.fillStyle = '#f3f6f9';
  pen.fillRect(0, 0, map.clientWidth, map.clientHeight);
  if (!state) return;
  const share = Math.min(1, (now - stateAt) / POLL_MS);
  const objects = state.objects.map(object => between(object, share));
  const user = between(state.user, share);
  if (view.follow) { view.lat = user.lat; view.lon = user.lon; }
  drawRings(user);
  drawAirports();
  if (shown.trails) for (const object of objects) drawTrail(object.id, object);
  objects.sort((a, b) => a.alt - b.alt);
  for (const object of objects) drawAircraft(object, now);
  drawUser(user);
  if (shown.labels) drawLabels(objects);
}

// --- side panel ---

function text(id, value) {
  const element = $(id);
  if (element.textContent !== String(value)) element.textContent = value;
}

function showStatus() {
  const lamp = $('lamp');
  const word = lost ? 'no answer' : state.paused || !state.running ? 'paused' : 'running';
  lamp.className = 'lamp ' + (lost ? 'lost' : word);
  text('lamp', word);
  text('utc', new Date(state.utc * 1000).toISOString().slice(11, 19));
  text('frames', state.frameRate);
  text('clients', state.clients.filter(Boolean).join(', ') || 'none');
  text('count-all', state.objects.length);
  text('count-static', state.objects.filter(isStatic).length);
  text('count-ground', state.objects.filter(object => object.ground && !isStatic(object)).length);
  text('count-air', state.objects.filter(object => !object.ground).length);
}

function showList() {
  const wanted = $('search').value.trim().toUpperCase();
  const rows = state.objects
    .filter(object => !wanted || object.tail.toUpperCase().includes(wanted) || object.title.toUpperCase().includes(wanted))
    .map(object => ({ object, nm: distanceNm(state.user, object) }))
    .sort((a, b) => a.nm - b.nm);
  const body = $('rows');
  while (body.rows.length > rows.length) body.deleteRow(-1);
  rows.forEach(({ object, nm }, i) => {
    let row = body.rows[i];
    if (!row) {
      row = body.insertRow();
      for (let cell = 0; cell < 4; ++cell) row.insertCell();
      row.cells[0].append(document.createElement('i'), document.createElement('span'));
    }
    row.dataset.id = object.id;
    row.classList.toggle('selected', object.id === selected);
    row.title = object.title;
    row.cells[0].firstChild.style.background = colourOf(object);
    row.cells[0].lastChild.textContent = object.tail || '#' + object.id;
    row.cells[1].textContent = altitudeText(object) + climbMark(object);
    row.cells[2].textContent = Math.round(object.kt);
    row.cells[3].textContent = nm.toFixed(1);
  });
}

function showDetails() {
  const object = state.objects.find(each => each.id === selected);
  $('details').hidden = !object;
  if (!object) return;
  text('d-tail', object.tail || '#' + object.id);
  text('d-title', object.title);
  const values = [
    ['Altitude', feet(object.alt) + ' ft'], ['Above ground', feet(object.agl) + ' ft'], ['Ground speed', Math.round(object.kt) + ' kt'],
    ['Heading', Math.round(object.heading) % 360 + '°'], ['Vertical', feet(object.vs) + ' ft/min'], ['Airspeed', Math.round(object.tas) + ' kt'],
    ['Pitch', (-object.pitch).toFixed(1) + '°'], ['Bank', Math.abs(object.bank).toFixed(1) + '°' + (object.bank < -0.05 ? ' right' : object.bank > 0.05 ? ' left' : '')], ['Flaps', object.flaps + ' %'],
    ['Throttle', object.throttle + ' %'], ['Spoilers', object.spoilers + ' %'], ['Object', object.id],
    ['Latitude', object.lat.toFixed(5)], ['Longitude', object.lon.toFixed(5)], ['In the world', object.age + ' s'],
  ];
  const list = $('d-values');
  values.forEach(([name, value], i) => {
    let cell = list.children[i];
    if (!cell) {
      cell = document.createElement('div');
      cell.append(document.createElement('dt'), document.createElement('dd'));
      list.append(cell);
    }
    cell.firstChild.textContent = name;
    cell.lastChild.textContent = value;
  });
  const flags = LIGHTS.map(([name, bit]) => [name, object.lights >> bit & 1, '']);
  flags.push(['gear', object.gear, 'plain'], ['engine', object.engine, 'plain'], ['frozen', object.frozen, 'plain'],
             ['flight plan', object.plan, 'plain']);
  $('d-lights').replaceChildren(...flags.map(([name, on, kind]) => {
    const mark = document.createElement('span');
    mark.textContent = name;
    mark.className = kind + (on ? ' on' : '');
    return mark;
  }));
}

function drawProfile() {
  if ($('details').hidden) return;
  const canvas = $('profile');
  const context = resized(canvas);
  const [width, height] = [canvas.clientWidth, canvas.clientHeight];
  context.clearRect(0, 0, width, height);
  if (history.length < 2) return;
  const from = history[0][0];
  const span = Math.max(1, history[history.length - 1][0] - from);
  const top = Math.max(...history.map(point => point[3])) + 50;
  const bottom = Math.min(...history.map(point => point[3] - point[4])) - 50;
  const x = point => (point[0] - from) / span * width;
  const y = value => 14 + (height - 16) * (1 - (value - bottom) / Math.max(1, top - bottom));
  context.fillStyle = '#eae4da';
  context.beginPath();
  context.moveTo(0, height);
  for (const point of history) context.lineTo(x(point), y(point[3] - point[4]));
  context.lineTo(width, height);
  context.fill();
  context.lineWidth = 2;
  for (let i = 1; i < history.length; ++i) {
    context.strokeStyle = history[i][7] ? '#7a8797' : altitudeColour(history[i][3]);
    context.beginPath();
    context.moveTo(x(history[i - 1]), y(history[i - 1][3]));
    context.lineTo(x(history[i]), y(history[i][3]));
    context.stroke();
  }
  context.fillStyle = '#93a1b2';
  context.font = '10px system-ui, "DejaVu Sans", sans-serif';
  context.fillText(`altitude over the last ${Math.round(span)} s, highest ${feet(top - 50)} ft`, 0, 9);
}

// --- asking ---

async function ask(path) {
  const answer = await fetch(path, { cache: 'no-store' });
  if (!answer.ok) throw new Error(`${path}: ${answer.status}`);
  return answer.json();
}

function take(next) {
  before = new Map((state ? state.objects : []).map(object => [object.id, object]));
  if (state) before.set(state.user.id, state.user);
  state = next;
  stateAt = performance.now();
  const alive = new Set();
  for (const object of state.objects) {
    alive.add(object.id);
    const points = trails.get(object.id) || [];
    const last = points[points.length - 1];
    if (!last || distanceNm({ lat: last[0], lon: last[1] }, object) > TRAIL_POINT_NM) {
      points.push([object.lat, object.lon, object.alt, object.ground]);
      if (points.length > TRAIL_POINTS) points.shift();
    }
    trails.set(object.id, points);
  }
  for (const id of trails.keys()) if (!alive.has(id)) trails.delete(id);
  if (selected !== null && !alive.has(selected)) select(null);
  if (!view.placed) {
    view.placed = true;
    view.lat = state.user.lat;
    view.lon = state.user.lon;
    if (state.objects.length) showAll();
  }
}

async function poll() {
  try {
    take(await ask('state.json'));
    lost = false;
  } catch (error) {
    lost = true;
  }
  if (state) { showStatus(); showList(); showDetails(); }
  setTimeout(poll, POLL_MS);
}

async function pollHistory() {
  const id = selected;
  if (id !== null) {
    try {
      const points = await ask(`history.json?id=${id}`);
      if (id === selected) history = points;
    } catch (error) {
      history = [];
    }
    drawProfile();
  }
  setTimeout(pollHistory, 4 * POLL_MS);
}

async function control(action) {
  try {
    const answer = await fetch('control', { method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(action) });
    text('answer', answer.ok ? `${action.action}: done` : await answer.text());
  } catch (error) {
    text('answer', `${action.action}: no answer`);
  }
}

// --- the user ---

function select(id) {
  if (id !== selected) history = [];
  selected = id;
  if (state) { showList(); showDetails(); }
  drawProfile();
}

function showAll() {
  const all = [state.user, ...state.objects];
  const lats = all.map(each => each.lat);
  const lons = all.map(each => state.user.lon + wrapped(each.lon - state.user.lon));
  const [south, north] = [Math.min(...lats), Math.max(...lats)];
  const [west, east] = [Math.min(...lons), Math.max(...lons)];
  view.follow = false;
  view.lat = (south + north) / 2;
  view.lon = wrapped((west + east) / 2);
  const highNm = Math.max(0.5, (north - south) * NM_PER_DEG);
  const wideNm = Math.max(0.5, (east - west) * NM_PER_DEG * lonScale());
  view.pxPerNm = Math.min(2000, 0.85 * Math.min(map.clientHeight / highNm, map.clientWidth / wideNm));
}

function zoom(factor, x = map.clientWidth / 2, y = map.clientHeight / 2) {
  const [lat, lon] = toPlace(x, y);
  view.pxPerNm = Math.min(8000, Math.max(0.4, view.pxPerNm * factor));
  if (view.follow) return;
  const [newLat, newLon] = toPlace(x, y);
  view.lat += lat - newLat;
  view.lon = wrapped(view.lon + lon - newLon);
}

function aircraftAt(x, y) {
  let best = null;
  let nearest = 18;
  for (const object of state ? state.objects : []) {
    const [ox, oy] = toScreen(object.lat, object.lon);
    const distance = Math.hypot(ox - x, oy - y);
    if (distance < nearest) [best, nearest] = [object.id, distance];
  }
  return best;
}

let drag = null;
map.addEventListener('pointerdown', event => {
  drag = { x: event.offsetX, y: event.offsetY, moved: false };
  map.setPointerCapture(event.pointerId);
});
map.addEventListener('pointermove', event => {
  if (!drag) {
    map.style.cursor = aircraftAt(event.offsetX, event.offsetY) === null ? '' : 'pointer';
    return;
  }
  const [dx, dy] = [event.offsetX - drag.x, event.offsetY - drag.y];
  if (!drag.moved && Math.hypot(dx, dy) < 4) return;
  view.follow = false;
  view.lat += dy / NM_PER_DEG / view.pxPerNm;
  view.lon = wrapped(view.lon - dx / NM_PER_DEG / view.pxPerNm / lonScale());
  drag = { x: event.offsetX, y: event.offsetY, moved: true };
  map.classList.add('dragging');
});
map.addEventListener('pointerup', event => {
  map.classList.remove('dragging');
  if (drag && !drag.moved) {
    if (event.shiftKey) {
      const [lat, lon] = toPlace(event.offsetX, event.offsetY);
      control({ action: 'teleport', lat, lon, alt: state.user.alt, onGround: state.user.ground });
    } else {
      select(aircraftAt(event.offsetX, event.offsetY));
    }
  }
  drag = null;
});
map.addEventListener('wheel', event => {
  event.preventDefault();
  zoom(Math.exp(-event.deltaY * 0.0015), event.offsetX, event.offsetY);
}, { passive: false });
map.addEventListener('keydown', event => {
  const keys = { '+': () => zoom(1.4), '-': () => zoom(1 / 1.4), Escape: () => select(null) };
  if (keys[event.key]) keys[event.key]();
});

$('view').addEventListener('click', event => {
  const action = event.target.dataset.view;
  if (action === 'in') zoom(1.6);
  if (action === 'out') zoom(1 / 1.6);
  if (action === 'user') view.follow = true;
  if (action === 'all' && state) showAll();
  if (action in shown) {
    shown[action] = !shown[action];
    event.target.classList.toggle('on', shown[action]);
  }
});
$('rows').addEventListener('click', event => {
  const row = event.target.closest('tr');
  if (!row) return;
  select(Number(row.dataset.id));
  const object = state.objects.find(each => each.id === selected);
  const [x, y] = toScreen(object.lat, object.lon);
  if (x < 0 || y < 0 || x > map.clientWidth || y > map.clientHeight) {
    view.follow = false;
    [view.lat, view.lon] = [object.lat, object.lon];
  }
});
$('search').addEventListener('input', () => state && showList());
$('deselect').addEventListener('click', () => select(null));
$('controls').addEventListener('click', event => {
  const action = event.target.dataset.action;
  if (action) control({ action });
});

function drawRamp() {
  const ramp = $('ramp').getContext('2d');
  const stops = RAMP.length - 1;
  const gradient = ramp.createLinearGradient(0, 0, 220, 0);
  RAMP.forEach(([alt], i) => gradient.addColorStop(i / stops, altitudeColour(alt)));
  ramp.fillStyle = gradient;
  ramp.fillRect(0, 0, 220, 10);
}

drawRamp();
ask('trails.json').then(known => {
  for (const [id, points] of Object.entries(known)) trails.set(Number(id), points);
}).catch(() => {}).finally(() => {
  poll();
  pollHistory();
  requestAnimationFrame(draw);
});
