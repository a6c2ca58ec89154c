// What the editor can hold of a page. An element of the page is a node or a mark that knows its tag and its
// attributes; what has no place here is an island, which is shown as a box and written as it stands.
//
// o: the number of the element's origin in the page as it was read; null for what was made in the editor
// a: its attributes, [[name, value], ...], as they stand
globalThis.PageEditor = {};
(function (E) {
"use strict";
const { Schema } = PageEditorParts.model;

E.headings = ["h1", "h2", "h3", "h4", "h5", "h6"];
E.inlineTags = new Set(("a abbr acronym b bdi bdo big cite code del dfn em font i ins kbd label mark nobr q s samp " +
  "small span strike strong sub sup time tt u var").split(" "));
// Blocks that hold other blocks.
E.wrapperTags = new Set(("address article aside blockquote body center dd details dialog dir div dl dt fieldset " +
  "figcaption figure footer form header hgroup legend main menu nav section summary").split(" "));
E.invisibleTags = new Set("base head link meta noscript script style template title".split(" "));

// What of an element's attributes is shown. Nothing that runs, loads or leads anywhere.
const shownAttributes = new Set(("align alt bgcolor border cellpadding cellspacing class color colspan dir face " +
  "height hspace lang reversed rowspan size start style title type valign value vspace width").split(" "));

E.shown = function (attributes, more = {}) {
  const result = {};
  for (const [name, value] of attributes || []) {
    if (shownAttributes.has(name) && value.length < 10000)
      result[name] = value;
  }
  return Object.assign(result, more);
};
E.attribute = function (attributes, name) {
  const found = (attributes || []).find(one => one[0] === name);
  return found ? found[1] : null;
};
// The attributes with one of them set, or away where the value is null.
E.withAttribute = function (attributes, name, value) {
  const others = (attributes || []).filter(one => one[0] !== name);
  return value === null ? others : [...others, [name, value]];
};

// A picture below the page's folder, or one that stands in the page itself.
E.shownSource = function (source) {
  return source && (/^data:image\/(png|jpeg|gif|webp|bmp)[;,]/i.test(source)
    || !/^[a-z][a-z0-9+.-]*:|^[\\/]{2}/i.test(source.trim())) ? source : null;
};

const own = { o: { default: null }, a: { default: [] } };
const textBlock = (group, tag, more = {}) => Object.assign({
  content: "inline*", group, attrs: own, toDOM: node => [tag, E.shown(node.attrs.a), 0] }, more);

function islandDom(node, isInline) {
  const label = node.attrs.label;
  return [isInline ? "span" : "div", { class: "qe-island" + (label ? "" : " qe-unseen"), contenteditable: "false",
    title: node.attrs.source.slice(0, 400) }, label];
}

const cellContent = "(block | bare)+";
const nodes = {
  doc: { content: "(block | bare)+" },
  paragraph: textBlock("block", "p", { parseDOM: [{ tag: "p" }] }),
  heading: {
    content: "inline*", group: "block", defining: true, attrs: Object.assign({ level: { default: 1 } }, own),
    toDOM: node => ["h" + node.attrs.level, E.shown(node.attrs.a), 0],
    parseDOM: E.headings.map((tag, at) => ({ tag, attrs: { level: at + 1 } })),
  },
  // Coloured by its language; its text is all that it holds.
  code_block: {
    content: "text*", marks: "", group: "block", code: true, defining: true,
    attrs: Object.assign({ language: { default: "" } }, own),
    toDOM: node => ["pre", E.shown(node.attrs.a, { class: "qb-code", "data-language": node.attrs.language }), 0],
    parseDOM: [{ tag: "pre", preserveWhitespace: "full" }],
  },
  // Text with its own line ends, and with marks.
  preformatted: textBlock("block", "pre", { code: true, defining: true }),
  wrapper: {
    content: "(block | bare)*", group: "block", attrs: Object.assign({ tag: { default: "div" } }, own),
    toDOM: node => [{ form: "div", body: "div", noscript: "div", dialog: "div" }[node.attrs.tag] || node.attrs.tag,
      E.shown(node.attrs.a, node.attrs.tag === "details" ? { open: "" } : {}), 0],
  },
  blockquote: {
    content: "(block | bare)+", group: "block", defining: true, attrs: own,
    toDOM: node => ["blockquote", E.shown(node.attrs.a), 0], parseDOM: [{ tag: "blockquote" }],
  },
  bullet_list: {
    content: "(list_item | island)+", group: "block", attrs: own,
    toDOM: node => ["ul", E.shown(node.attrs.a), 0], parseDOM: [{ tag: "ul" }],
  },
  ordered_list: {
    content: "(list_item | island)+", group: "block", attrs: own,
    toDOM: node => ["ol", E.shown(node.attrs.a), 0], parseDOM: [{ tag: "ol" }],
  },
  horizontal_rule: { group: "block", attrs: own, toDOM: node => ["hr", E.shown(node.attrs.a)],
    parseDOM: [{ tag: "hr" }] },
  table: {
    content: "(caption | island)* (table_row | table_section | island)+", group: "block", isolating: true, attrs: own,
    toDOM: node => ["table", E.shown(node.attrs.a), 0], parseDOM: [{ tag: "table" }],
  },
  island: {
    group: "block", atom: true, attrs: Object.assign({ source: { default: "" }, label: { default: "" } }, own),
    toDOM: node => islandDom(node, false),
  },
  caption: textBlock("", "caption", { isolating: true }),
  table_section: {
    content: "(table_row | island)*", attrs: Object.assign({ tag: { default: "tbody" } }, own),
    toDOM: node => [node.attrs.tag, E.shown(node.attrs.a), 0],
  },
  table_row: { content: "(table_cell | island)*", attrs: own, toDOM: node => ["tr", E.shown(node.attrs.a), 0] },
  table_cell: {
    content: cellContent, isolating: true, attrs: Object.assign({ tag: { default: "td" } }, own),
    toDOM: node => [node.attrs.tag, E.shown(node.attrs.a), 0],
  },
  list_item: {
    content: "(bare | block)+", defining: true, attrs: own,
    toDOM: node => ["li", E.shown(node.attrs.a), 0], parseDOM: [{ tag: "li" }],
  },
  // Text that stands between blocks without an element of its own.
  bare: { content: "inline*", attrs: { o: { default: null } }, toDOM: () => ["div", { class: "qe-bare" }, 0] },
  text: { group: "inline" },
  image: {
    inline: true, group: "inline", draggable: true, attrs: own,
    toDOM(node) {
      const source = E.shownSource(E.attribute(node.attrs.a, "src"));
      return ["img", E.shown(node.attrs.a, source ? { src: source } : { class: "qe-island", alt:
        "‹" + (E.attribute(node.attrs.a, "src") || "picture").slice(0, 80) + "›" })];
    },
  },
  hard_break: { inline: true, group: "inline", selectable: false, attrs: own, toDOM: () => ["br"],
    parseDOM: [{ tag: "br" }] },
  inline_island: {
    inline: true, group: "inline", atom: true,
    attrs: Object.assign({ source: { default: "" }, label: { default: "" } }, own),
    toDOM: node => islandDom(node, true),
  },
};

// k: one number for each element, so that neighbours stay two; d: how deep it stands among the marks of its text.
function mark(tags, more = {}) {
  return Object.assign({
    excludes: "", attrs: { tag: { default: tags[0] }, a: { default: [] }, k: { default: null }, d: { default: 99 } },
    toDOM: one => [one.attrs.tag, E.shown(one.attrs.a), 0],
    parseDOM: tags.map(tag => ({ tag, attrs: { tag } })),
  }, more);
}
const marks = {
  link: mark(["a"], {
    inclusive: false,
    toDOM: one => ["a", E.shown(one.attrs.a, { class: "qe-link", title: E.attribute(one.attrs.a, "href") || "" }), 0],
  }),
  strong: mark(["strong", "b"]),
  em: mark(["em", "i"]),
  underline: mark(["u"]),
  strike: mark(["s", "strike", "del"]),
  sub: mark(["sub"]),
  sup: mark(["sup"]),
  code: mark(["code", "tt"]),
  span: mark(["span"], { parseDOM: [] }),
};
E.markOfTag = tag => Object.keys(marks).find(name => marks[name].parseDOM.some(rule => rule.tag === tag)) || "span";
E.schema = new Schema({ nodes, marks });
})(PageEditor);
