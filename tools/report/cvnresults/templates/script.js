'use strict';
(() => {
  const table = document.getElementById('table');
  const form = document.getElementById('filter');
  const text = document.getElementById('filter-text');
  const module = document.getElementById('filter-module');
  const boxes = [...form.querySelectorAll('input[type=checkbox]')];
  const groups = [...table.tBodies].map((body) => ({
    body,
    head: body.rows[0],
    module: body.rows[0].cells[0].firstChild.data.trim(),
    rows: [...body.rows].slice(1),
  }));
  const rows = groups.flatMap((group) => group.rows.map((row) => ({
    row,
    module: group.module,
    verdict: row.cells[0].textContent,
    words: `${group.module} ${row.textContent}`.toLowerCase(),
    details: document.getElementById(`t${row.id.slice(1)}`).parentElement,
    isShown: true,
  })));

  function filter() {
    const wanted = text.value.toLowerCase().split(/\s+/);
    const verdicts = new Set(boxes.filter((box) => box.checked).map((box) => box.value));
    let count = 0;
    for (const one of rows) {
      const isShown = verdicts.has(one.verdict) && (module.value === '' || module.value === one.module) &&
        wanted.every((word) => one.words.includes(word));
      if (isShown !== one.isShown) {
        one.isShown = isShown;
        one.row.hidden = !isShown;
        one.details.hidden = !isShown;
      }
      count += isShown;
    }
    for (const group of groups)
      group.head.hidden = group.rows.every((row) => row.hidden) || group.body.rows.length === 1;
    document.getElementById('shown').textContent = `${count} of ${rows.length} tests shown`;
  }

  const flat = document.createElement('tbody');
  const order = ['FAIL', 'ERROR', 'BLOCKED', 'FLAKY', 'NOT RUN', 'SKIPPED', 'PASS'];
  const words = new Intl.Collator('en', {numeric: true}).compare;
  const compareCells = (a, b, column) => column === 0 ?
    order.indexOf(a.textContent) - order.indexOf(b.textContent) : words(a.textContent, b.textContent);

  // Cycles through ascending, descending and the order of the modules.
  function sort(header) {
    const column = header.cellIndex;
    const direction = {ascending: 'descending', descending: ''}[header.getAttribute('aria-sort') ?? ''] ?? 'ascending';
    for (const other of header.parentElement.cells) other.removeAttribute('aria-sort');
    if (direction === '') {
      for (const group of groups) group.body.append(...group.rows);
      flat.remove();
    } else {
      header.setAttribute('aria-sort', direction);
      const sorted = rows.map((one) => one.row);
      sorted.sort((a, b) => compareCells(a.cells[column], b.cells[column], column));
      if (direction === 'descending') sorted.reverse();
      flat.append(...sorted);
      table.append(flat);
    }
    filter();
  }

  for (const header of table.tHead.rows[0].cells) {
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = header.textContent;
    button.addEventListener('click', () => sort(header));
    header.replaceChildren(button);
  }
  form.hidden = false;
  form.addEventListener('submit', (event) => event.preventDefault());
  form.addEventListener('input', filter);
  filter();

  function openTarget() {
    const target = document.getElementById(location.hash.slice(1));
    const details = target && target.closest('details');
    if (!details) return;
    details.open = true;  // some browsers do that themselves
    details.scrollIntoView();
  }
  addEventListener('hashchange', openTarget);
  openTarget();
})();
