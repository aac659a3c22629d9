'use strict';
// Shows the board and sends commands to it, the same ones that cvnsim takes.

const pictureEveryMs = 80;
const stateEveryMs = 400;
const byId = (id) => document.getElementById(id);

async function send(line) {
  const answer = byId('answer');
  try {
    const response = await fetch('command', {method: 'POST', body: line});
    const result = await response.json();
    answer.textContent = result.done ? 'Done: ' + line : result.why;
    answer.classList.toggle('refused', !result.done);
  } catch {
    answer.textContent = 'The panel is not there any more.';
    answer.classList.add('refused');
  }
  await showState();
}

// One after the other, so that what is said last is the answer to the last one.
let sent = Promise.resolve();

function command(line) {
  sent = sent.then(() => send(line));
}

function makePort(port, pictures) {
  const card = byId('port').content.cloneNode(true).firstElementChild;
  const find = (name) => card.querySelector('.' + name);
  card.querySelector('legend').textContent = port.name;
  const timing = find('timing');
  const plug = port.vby1 ? 'vby1 plug ' + port.number : 'plug ' + port.number;
  const unplug = port.vby1 ? 'vby1 unplug ' + port.number : 'unplug ' + port.number;
  find('plug').onclick = () => command(plug + ' ' + timing.value);
  find('unplug').onclick = () => command(unplug);
  find('signal').onclick = (event) =>
      command('signal ' + port.number + ' ' + event.target.dataset.to);
  find('retime').onclick = () => command('timing ' + port.number + ' ' + timing.value.split(' ')[0]);
  for (const name of ['signal', 'retime']) find(name).hidden = port.vby1;
  const select = find('picture');
  for (const name of pictures) select.add(new Option(name));
  select.setAttribute('aria-label', 'Picture of ' + port.name);
  timing.setAttribute('aria-label', 'Timing of ' + port.name);
  for (const button of card.querySelectorAll('button')) setButton(button, button.textContent, port.name);
  select.onchange = () => command('picture ' + port.id + ' ' + select.value);
  card.dataset.id = port.id;
  byId('ports').append(card);
  return card;
}

function setButton(button, text, portName) {
  if (button.textContent !== text) button.textContent = text;
  button.setAttribute('aria-label', text + ', ' + portName);
}

const cards = new Map();

function showPort(port, pictures) {
  if (!cards.has(port.id)) cards.set(port.id, makePort(port, pictures));
  const card = cards.get(port.id);
  const find = (name) => card.querySelector('.' + name);
  card.querySelector('.note').textContent = port.text;
  card.classList.toggle('live', port.live);
  find('unplug').disabled = !port.cable;
  const signal = find('signal');
  signal.disabled = !port.cable;
  signal.dataset.to = port.sending ? 'off' : 'on';
  setButton(signal, 'Signal ' + signal.dataset.to, port.name);
  find('retime').disabled = !port.cable;
  const select = find('picture');
  if (document.activeElement === select) return;
  if (![...select.options].some((option) => option.value === port.picture)) {
    const image = new Option(port.picture);
    image.disabled = true;
    select.add(image);
  }
  select.value = port.picture;
}

// Text that did not change stays as it is, with its selection and its place.
function setText(id, text) {
  if (byId(id).textContent !== text) byId(id).textContent = text;
}

function showCalls(lines) {
  const list = byId('calls');
  const text = lines.join('\n');
  if (list.textContent === text) return;
  const atEnd = list.scrollTop + list.clientHeight >= list.scrollHeight - 20;
  list.textContent = text;
  if (atEnd) list.scrollTop = list.scrollHeight;
}

function setOn(on, why) {
  document.body.classList.toggle('off', !on);
  setText('power', why);
}

async function showState() {
  try {
    const response = await fetch('state.json');
    const state = await response.json();
    setOn(state.on, state.on ? 'The board is on.' : state.why);
    if (!state.on) return;
    for (const port of state.ports) showPort(port, state.pictures);
    setText('windows', state.windows);
    setText('state', state.text);
    setText('stick', state.stick ? 'The stick is in.' : 'The stick is out.');
    setText('thermal', 'now ' + state.degrees);
    showCalls(state.calls);
  } catch {
    setOn(false, 'The panel is not there any more.');
  }
}

let shownTag = '';

async function showPicture() {
  try {
    const response = await fetch('picture.png', {cache: 'no-store', headers: {'If-None-Match': shownTag}});
    if (response.status !== 200) return;
    const image = byId('picture');
    const address = URL.createObjectURL(await response.blob());
    await new Promise((done) => {
      image.onload = image.onerror = done;
      image.src = address;
    });
    URL.revokeObjectURL(address);
    shownTag = response.headers.get('ETag');
    image.dataset.tag = shownTag;
  } catch {
    // The state says that the server is gone.
  }
}

// Each look starts when the one before is done: a slow machine shows less, not later.
async function repeat(look, everyMs) {
  for (;;) {
    if (!document.hidden) await look();
    await new Promise((done) => setTimeout(done, everyMs));
  }
}

byId('command').addEventListener('submit', (event) => {
  event.preventDefault();
  const line = byId('line').value.trim();
  if (line !== '') command(line);
});
byId('temperature').addEventListener('submit', (event) => {
  event.preventDefault();
  command('temperature ' + byId('degrees').value);
});
for (const button of document.querySelectorAll('[data-command]')) {
  button.addEventListener('click', () => command(button.dataset.command));
}
repeat(showState, stateEveryMs);
repeat(showPicture, pictureEveryMs);
