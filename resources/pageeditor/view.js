// The editor in its window: what the program asks of it, and what it tells the program.
(function (E) {
"use strict";
const P = PageEditorParts;
const S = E.schema;
const { EditorState, Plugin, PluginKey } = P.state;
const { Decoration, DecorationSet } = P;
const Pause = 400; // milliseconds without a change after which the state is kept outside, and more of a large page
const ColourPause = 60;
const LargePaste = 1000000; // characters of markup

E.pages = [];  // texts that the program keeps too, by the same numbers
E.page = null; // the one that is being edited
E.view = null;
E.tell = (what, value = {}) => E.bridge && E.bridge.Tell(what, JSON.stringify(value));

// Colours of code: asked for when a code block has changed, drawn over its text.
const colours = new Map(); // by language and text
const colourKey = (text, language) => language + "\n" + text;
const asked = new Set();
const codeKey = new PluginKey("code");
E.coloursOf = (text, language) => colours.get(colourKey(text, language));

function decorationsOf(doc) {
  const all = [];
  doc.descendants((node, at) => {
    if (node.type.name !== "code_block")
      return !node.isTextblock;
    let begin = at + 1;
    for (const [length, kind] of E.coloursOf(node.textContent, node.attrs.language) || []) {
      if (kind)
        all.push(Decoration.inline(begin, begin + length, { class: "qb-" + kind }));
      begin += length;
    }
    return false;
  });
  return DecorationSet.create(doc, all);
}
const codePlugin = new Plugin({
  key: codeKey,
  state: {
    init: (_, state) => decorationsOf(state.doc),
    apply: (tr, value) => tr.docChanged || tr.getMeta(codeKey) ? decorationsOf(tr.doc) : value,
  },
  props: { decorations: state => codeKey.getState(state) },
});
function askForColours(doc) {
  doc.descendants(node => {
    if (node.type.name !== "code_block")
      return !node.isTextblock;
    const key = colourKey(node.textContent, node.attrs.language);
    if (node.textContent && !colours.has(key) && !asked.has(key)) {
      asked.add(key);
      E.tell("colour", { text: node.textContent, language: node.attrs.language });
    }
    return false;
  });
}
E.coloured = function ({ text, language, pieces }) {
  colours.set(colourKey(text, language), pieces);
  asked.delete(colourKey(text, language));
  if (E.view)
    E.view.dispatch(E.view.state.tr.setMeta(codeKey, true).setMeta("addToHistory", false));
};

// The state, told when nothing has changed for a moment.
let keepTimer = 0;
let keepPause = Pause;
let colourTimer = 0;
let revision = 0;
const watchPlugin = new Plugin({
  view: () => ({
    update(view, before) {
      if (view.state.doc !== before.doc)
        changed(view);
      if (view.state.doc !== before.doc || !view.state.selection.eq(before.selection)
          || view.state.storedMarks !== before.storedMarks)
        E.tell("state", Object.assign({ revision }, E.stateOf(view.state)));
    },
  }),
});
function changed(view) {
  ++revision;
  clearTimeout(keepTimer);
  clearTimeout(colourTimer);
  keepTimer = setTimeout(keep, keepPause);
  colourTimer = setTimeout(() => askForColours(view.state.doc), ColourPause);
}
// Takes a small part of the time, however large the page is.
function keep() {
  const begin = performance.now();
  E.tell("kept", E.written());
  keepPause = Math.max(Pause, 4 * (performance.now() - begin));
}

// The page as it is now, in pieces.
E.written = function () {
  const { doc } = E.view.state;
  const isEmpty = E.isEmpty(doc);
  if (doc.eq(E.page.doc))
    return { revision, isEmpty, pieces: [[E.page.base, 0, E.page.text.length]] };
  const sheet = E.sheet.light + (E.page.isDarkAble ? E.sheet.dark : "");
  const { pieces } = E.write(E.page, doc, E.coloursOf, sheet);
  return { revision, isEmpty, pieces };
};

// What is pasted: pictures go to the program, markup is read like a page and cleaned, text stays text.
const picturesOf = data => [...(data ? data.files : [])].filter(file => /^image\//.test(file.type));
function takePictures(files, place) {
  for (const file of files) {
    if (file.size > E.mostPicture) { // too much to be read in vain
      E.tell("large_picture", { name: file.name || "picture" });
      continue;
    }
    const reader = new FileReader();
    reader.onload = () => E.tell("picture", { name: file.name || "picture", place,
      data: String(reader.result).replace(/^[^,]*,/, "") });
    reader.readAsDataURL(file);
  }
  return files.length > 0;
}
// A large text takes seconds, of which the user is told before anything else is done about it.
function tellLargePaste(_, event) {
  const html = event.clipboardData && event.clipboardData.getData("text/html");
  if (!html || html.length < LargePaste)
    return false;
  E.tell("pasting", { isDone: false });
  setTimeout(() => E.tell("pasting", { isDone: true }));
  return false;
}
let copied = null; // what was copied here, with all that it is
function handlePaste(view, event, slice) {
  const data = event.clipboardData;
  const html = data && data.getData("text/html");
  if (copied && html && html.includes("data-pm-slice")
      && slice.content.textBetween(0, slice.content.size, "\n") === copied.text) {
    view.dispatch(view.state.tr.replaceSelection(copied.slice).scrollIntoView());
    return true;
  }
  if (!html)
    return takePictures(picturesOf(data), null);
  if (view.state.selection.$from.parent.type.spec.code)
    return false;
  const content = E.readForeign(html);
  if (content.size === 0)
    return takePictures(picturesOf(data), null);
  const isText = content.childCount === 1 && content.firstChild.isTextblock;
  const open = isText ? 1 : 0; // a single text goes on where the caret stands
  view.dispatch(view.state.tr.replaceSelection(new P.model.Slice(content, open, open)).scrollIntoView());
  return true;
}
function handleDrop(view, event, slice, moved) {
  if (moved)
    return false;
  const place = view.posAtCoords({ left: event.clientX, top: event.clientY });
  const files = picturesOf(event.dataTransfer);
  event.preventDefault();
  if (takePictures(files, place ? place.pos : null))
    return true;
  const html = event.dataTransfer.getData("text/html");
  const content = html ? E.readForeign(html) : null;
  if (place && content && content.size)
    view.dispatch(view.state.tr.insert(place.pos, content));
  return Boolean(content);
}

function stateFor(doc) {
  const rules = P.inputRules;
  return EditorState.create({
    doc,
    plugins: [
      rules.inputRules({ rules: [
        rules.wrappingInputRule(/^\s*([-*])\s$/, S.nodes.bullet_list),
        rules.wrappingInputRule(/^1\.\s$/, S.nodes.ordered_list),
        rules.textblockTypeInputRule(/^(#{1,6})\s$/, S.nodes.heading, found => ({ level: found[1].length })),
        rules.textblockTypeInputRule(/^```$/, S.nodes.code_block),
      ] }),
      P.keymap(E.keys()), P.keymap(P.commands.baseKeymap), P.history.history(), P.dropCursor(), P.gapCursor(),
      codePlugin, E.findPlugin, watchPlugin,
    ],
  });
}

// A link is text here.
function stayHere(_, event) {
  if (event.target.closest && event.target.closest("a"))
    event.preventDefault();
  return false;
}

// The looks of the page around the text.
function dress(page, colourRules, isDark) {
  const element = (id, tag) => {
    const found = document.getElementById(id) || document.head.appendChild(document.createElement(tag));
    found.id = id;
    return found;
  };
  document.querySelectorAll(".qe-page-style").forEach(one => one.remove());
  for (const style of page.styles) {
    const one = document.createElement(style.href ? "link" : "style");
    one.className = "qe-page-style";
    if (style.href)
      Object.assign(one, { rel: "stylesheet", href: style.href });
    else
      one.textContent = style.text;
    document.head.appendChild(one);
  }
  element("qe-colours", "style").textContent = colourRules;
  document.documentElement.dataset.scheme = isDark && page.isDarkAble ? "dark" : "light";
  for (const [name, value] of Object.entries(E.shown(page.body)))
    document.body.setAttribute(name, value);
}

// Begins to edit a page; false for one that has nothing to edit.
E.open = function ({ text, base, colourRules, sheet, isDark, mostPicture }) {
  const page = E.read(text, base);
  if (!page)
    return false;
  E.pages[base] = page;
  E.page = page;
  E.sheet = sheet;
  E.mostPicture = mostPicture;
  E.noteNodes(page.doc);
  dress(page, colourRules, isDark);
  if (E.view)
    E.view.destroy();
  E.view = new P.EditorView(document.getElementById("editor"), {
    state: stateFor(page.doc), handlePaste, handleDrop,
    attributes: { spellcheck: "false" },
    handleDOMEvents: {
      copy: remember, cut: remember, paste: tellLargePaste,
      click: stayHere, auxclick: stayHere,
    },
    handleDoubleClickOn: (_, place, node) => {
      if (node.type.name === "image")
        E.tell("open_picture", {});
      return false;
    },
  });
  askForColours(page.doc);
  E.view.focus();
  E.tell("state", Object.assign({ revision }, E.stateOf(E.view.state)));
  // The engine drops the keys that come before a page's first frame.
  requestAnimationFrame(() => requestAnimationFrame(() => E.tell("shown")));
  return true;
};
// What is copied goes out as markup, by which it is known again when it comes back.
function remember(view) {
  const slice = view.state.selection.content();
  copied = slice.size ? { slice, text: slice.content.textBetween(0, slice.content.size, "\n") } : null;
  return false;
}

// Another text of the same page, from the source view: one step of the history.
E.takeSource = function ({ text, base }) {
  const page = E.view ? E.read(text, base) : null;
  if (!page)
    return false;
  E.pages[base] = page;
  E.noteNodes(page.doc);
  dress(page, document.getElementById("qe-colours").textContent, document.documentElement.dataset.scheme === "dark");
  E.page = page;
  const { state } = E.view;
  const begin = state.doc.content.findDiffStart(page.doc.content);
  if (begin !== null) {
    const tr = state.tr.replaceWith(0, state.doc.content.size, page.doc.content);
    E.view.dispatch(tr.setSelection(P.state.Selection.near(tr.doc.resolve(Math.min(begin, tr.doc.content.size)))));
  }
  askForColours(page.doc);
  return true;
};

E.run = function (name, argument) {
  const done = E.commands[name](argument)(E.view.state, E.view.dispatch, E.view);
  E.view.focus();
  return done;
};
E.putPicture = function ({ source, width, height, place }) {
  if (place !== null && place !== undefined) {
    const at = E.view.state.doc.resolve(Math.min(place, E.view.state.doc.content.size));
    E.view.dispatch(E.view.state.tr.setSelection(P.state.Selection.near(at)));
  }
  return E.run("picture", { source, width, height });
};
// The program sends this key behind those that were typed: calls travel another way, and overtake them.
document.addEventListener("keydown", event => {
  if (event.key !== "F24")
    return;
  event.preventDefault();
  event.stopPropagation();
  E.tell("after_keys");
}, true);

// What the program calls: a function by its name, with its argument.
E.answer = function (name, argument) {
  const functions = { open: E.open, coloured: E.coloured, takeSource: E.takeSource, putPicture: E.putPicture,
    find: E.find, replace: E.replace, tree: E.treeOf,
    text: () => E.written().pieces.map(piece => Array.isArray(piece)
      ? E.pages[piece[0]].text.slice(piece[1], piece[2]) : piece).join(""),
    anew: () => E.writeAnew(E.page, E.view.state.doc), run: ([command, value]) => E.run(command, value || undefined),
    written: () => JSON.stringify(E.written()) };
  const answer = functions[name](argument[0]);
  return answer === undefined ? null : answer;
};

new QWebChannel(qt.webChannelTransport, channel => {
  E.bridge = channel.objects.bridge;
  E.tell("ready");
});
})(PageEditor);
