'use strict';
(() => {
  const nav = document.querySelector('nav');
  const find = document.getElementById('find');
  const count = document.getElementById('count');
  if (!nav || !find)
    return;
  const rows = Array.from(nav.querySelectorAll('li'), (li) => {
    const link = li.querySelector('a');
    return { li, link, article: document.getElementById(link.hash.slice(1)) };
  });
  const wasOpen = new Map();
  let words = [];
  let run = 0;

  function branchesAbove(li, visit) {
    for (let above = li.parentElement.closest('li'); above; above = above.parentElement.closest('li'))
      visit(above, above.firstElementChild);
  }

  function open(details) {
    if (!wasOpen.has(details))
      wasOpen.set(details, details.open);
    details.open = true;
  }

  function clear() {
    nav.classList.remove('finding');
    for (const row of rows)
      row.li.classList.remove('hit', 'way');
    for (const [details, was] of wasOpen)
      details.open = was;
    wasOpen.clear();
    count.textContent = '';
  }

  function take(row) {
    row.li.classList.add('hit');
    branchesAbove(row.li, (above, details) => {
      above.classList.add('way');
      open(details);
    });
  }

  // In pieces, so that the page can be used while a large one is gone through.
  function search() {
    const own = ++run;
    words = find.value.toLowerCase().split(/\s+/).filter(Boolean);
    clear();
    mark();
    if (words.length === 0)
      return reveal();
    nav.classList.add('finding');
    let at = 0;
    let hits = 0;
    (function step() {
      if (own !== run)
        return;
      for (const end = performance.now() + 20; at < rows.length && performance.now() < end; ++at) {
        const text = rows[at].article.textContent.toLowerCase();
        if (words.every((word) => text.includes(word))) {
          take(rows[at]);
          ++hits;
        }
      }
      count.textContent = hits + ' of ' + rows.length + (at < rows.length ? ' …' : '');
      if (at < rows.length)
        setTimeout(step);
    })();
  }

  // What was found is marked in the item that is shown, where the browser can do that.
  function mark() {
    if (!window.Highlight || !CSS.highlights)
      return;
    CSS.highlights.delete('found');
    const shown = location.hash && document.getElementById(location.hash.slice(1));
    if (!shown || words.length === 0)
      return;
    const found = new Highlight();
    const texts = document.createTreeWalker(shown, NodeFilter.SHOW_TEXT);
    for (let node = texts.nextNode(); node && found.size < 2000; node = texts.nextNode()) {
      const text = node.data.toLowerCase();
      for (const word of text.length === node.data.length ? words : [])
        for (let at = text.indexOf(word); at >= 0 && found.size < 2000; at = text.indexOf(word, at + word.length)) {
          const range = new Range();
          range.setStart(node, at);
          range.setEnd(node, at + word.length);
          found.add(range);
        }
    }
    CSS.highlights.set('found', found);
  }

  // Lets the chosen item be seen in the tree.
  function reveal() {
    for (const row of rows) {
      if (row.link.hash === location.hash) {
        row.link.setAttribute('aria-current', 'true');
        branchesAbove(row.li, (above, details) => { details.open = true; });
        row.link.scrollIntoView({ block: 'nearest' });
      } else {
        row.link.removeAttribute('aria-current');
      }
    }
  }

  function show() {
    reveal();
    document.querySelector('main').scrollTop = 0;
    mark();
  }

  let typing = 0;
  find.hidden = false;
  find.addEventListener('input', () => {
    clearTimeout(typing);
    typing = setTimeout(search, 150);
  });
  find.addEventListener('keydown', (event) => {
    const first = rows.find((row) => row.li.classList.contains('hit'));
    if (event.key === 'Enter' && first)
      location.hash = first.link.hash;
    if (event.key === 'Escape') {
      find.value = '';
      search();
    }
  });
  document.addEventListener('keydown', (event) => {
    if (event.key === '/' && document.activeElement !== find) {
      event.preventDefault();
      find.focus();
    }
  });
  window.addEventListener('hashchange', show);
  show();
})();
