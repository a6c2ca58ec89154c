// Finding and replacing in the document, over the marks of its text.
(function (E) {
"use strict";
const { Plugin, PluginKey, TextSelection } = PageEditorParts.state;
const { Decoration, DecorationSet } = PageEditorParts;
const key = new PluginKey("find");

// Where a text stands: in each block on its own.
function placesOf(doc, wanted, matchCase) {
  const places = [];
  const fold = text => matchCase ? text : text.toLowerCase();
  const sought = fold(wanted).replace(/\u00a0/g, " ");
  if (!sought)
    return places;
  doc.descendants((node, at) => {
    if (!node.isTextblock)
      return true;
    // A thing that is no text counts as one character that nobody looks for.
    const text = fold(node.textBetween(0, node.content.size, "\n", "\ufffc")).replace(/\u00a0/g, " ");
    for (let found = text.indexOf(sought); found >= 0; found = text.indexOf(sought, found + sought.length))
      places.push([at + 1 + found, at + 1 + found + sought.length]);
    return false;
  });
  return places;
}

E.findPlugin = new Plugin({
  key,
  state: {
    init: () => ({ wanted: "", matchCase: false, places: [] }),
    apply(tr, value) {
      const asked = tr.getMeta(key);
      if (!asked && !tr.docChanged)
        return value;
      const { wanted, matchCase } = asked || value;
      return { wanted, matchCase, places: placesOf(tr.doc, wanted, matchCase) };
    },
  },
  props: {
    decorations(state) {
      const { places } = key.getState(state);
      const { from, to } = state.selection;
      return DecorationSet.create(state.doc, places.slice(0, 5000).map(([begin, end]) =>
        Decoration.inline(begin, end, { class: begin === from && end === to ? "qe-found qe-current" : "qe-found" })));
    },
  },
});

const isSelected = (state, place) => place[0] === state.selection.from && place[1] === state.selection.to;
function tell(view) {
  const { places } = key.getState(view.state);
  E.tell("found", { count: places.length, at: places.findIndex(place => isSelected(view.state, place)) + 1 });
}
function go(view, place) {
  view.dispatch(view.state.tr.setSelection(TextSelection.create(view.state.doc, ...place)).scrollIntoView());
  tell(view);
}
E.find = function ({ text, matchCase, step = 0 }) {
  const view = E.view;
  view.dispatch(view.state.tr.setMeta(key, { wanted: text, matchCase }));
  const { places } = key.getState(view.state);
  const { from, to } = view.state.selection;
  if (!places.length)
    return tell(view);
  const next = step < 0 ? [...places].reverse().find(place => place[1] <= from) || places.at(-1)
    : places.find(place => place[0] >= (step > 0 ? to : from)) || places[0];
  go(view, next);
};
// What is found and selected is replaced, and the next place looked for; or all places as one step.
E.replace = function ({ text, matchCase, by, all }) {
  const view = E.view;
  view.dispatch(view.state.tr.setMeta(key, { wanted: text, matchCase }));
  const { places } = key.getState(view.state);
  const chosen = all ? places : places.filter(place => isSelected(view.state, place));
  const tr = view.state.tr;
  for (const [begin, end] of [...chosen].reverse()) {
    const marks = tr.doc.nodeAt(begin) ? tr.doc.nodeAt(begin).marks : [];
    if (by)
      tr.replaceWith(begin, end, E.schema.text(by, marks));
    else
      tr.delete(begin, end);
  }
  view.dispatch(tr);
  E.tell("replaced", { count: chosen.length });
  if (!all)
    E.find({ text, matchCase });
  else
    tell(view);
};
})(PageEditor);
