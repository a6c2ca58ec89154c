// Reads a page's text into a document, and notes for each element where it stands in the text.
(function (E) {
"use strict";
const S = E.schema;
const Space = /[ \t\n\r\f]+/g;
const IsBlank = text => !/[^ \t\n\r\f]/.test(text);
E.colourSheet = "qb-code-colours";
E.baseMarks = ["<!--Start-->", "<!--End-->"];
const BaseMarks = new Set(["Start", "End"]);

const VoidTags = new Set("area base br col embed hr img input link meta param source track wbr".split(" "));

// A page, the places in it, and the document that was made of it.
class Page {
  constructor(text, base) {
    this.text = text;
    this.base = base; // which of the texts that the program keeps this one is
    this.marks = 0;
  }
}

// All that was ever read in this session, by number.
E.origins = [];
function noteOrigin(page, place) {
  E.origins.push(Object.assign({ page }, place));
  return E.origins.length - 1;
}

const isElement = node => node.tagName !== undefined;
const isText = node => node.nodeName === "#text";
const isComment = node => node.nodeName === "#comment";
const attributesOf = node => node.attrs.map(one => [one.prefix ? one.prefix + ":" + one.name : one.name, one.value]);
const isHtml = node => node.namespaceURI === "http://www.w3.org/1999/xhtml";

const blockTags = new Set([...E.wrapperTags, ...E.headings, "p", "pre", "ul", "ol", "li", "hr", "table", "thead",
  "tbody", "tfoot", "tr", "td", "th", "caption", "blockquote", "listing", "xmp", "plaintext"]);
function holdsBlock(node) {
  return (node.childNodes || []).some(child => isElement(child) && isHtml(child)
    && (blockTags.has(child.tagName) || holdsBlock(child)));
}
function isInline(node) {
  if (isText(node))
    return true;
  if (isComment(node) || !isElement(node) || (isHtml(node) && E.invisibleTags.has(node.tagName)))
    return false;
  return !isHtml(node) || !(blockTags.has(node.tagName) || (E.inlineTags.has(node.tagName) && holdsBlock(node)));
}

// Where an element's contents stand: between its tags.
function inside(node, at) {
  if (!at)
    return null;
  const begin = at.startTag ? at.startTag.endOffset : at.startOffset;
  return [begin, at.endTag ? at.endTag.startOffset : Math.max(begin, at.endOffset)];
}

class Reader {
  constructor(page) {
    this.page = page;
    this.places = new Map(); // the element of each begin
  }

  // Where an element stands. After tags that cross one tag makes several elements; it is the place of the first.
  placeOf(node) {
    const at = node && node.sourceCodeLocation;
    if (!at || (this.places.has(at.startOffset) && this.places.get(at.startOffset) !== node))
      return null;
    this.places.set(at.startOffset, node);
    return at;
  }

  // The origin of an element that holds blocks. Where one of them does not stand inside, behind the one before it,
  // it is written as it stands only as long as nothing in it is changed.
  container(node, children, window) {
    const at = this.placeOf(node);
    if (!window || (node && !at))
      return null;
    const outer = at ? [at.startOffset, at.endOffset] : window;
    const origin = { range: outer, open: [outer[0], window[0]], close: [window[1], outer[1]],
      tag: node ? node.tagName : null, attributes: node ? JSON.stringify(attributesOf(node)) : "" };
    const places = children.map(child => E.origins[child.attrs.o]);
    let last = window[0];
    const isStraight = places.every(place => {
      const fits = place && place.range[0] >= last && place.range[1] <= window[1];
      last = fits ? place.range[1] : last;
      return fits;
    });
    if (isStraight) {
      last = window[0];
      for (const place of places) {
        place.lead = [last, place.range[0]];
        last = place.range[1];
      }
      origin.tail = [last, window[1]];
      const space = [...places.map(place => place.lead), origin.tail]
        .map(range => this.page.text.slice(...range)).join("");
      origin.marks = E.baseMarks.filter(mark => space.includes(mark));
    }
    return noteOrigin(this.page, origin);
  }

  element(node) {
    const at = this.placeOf(node);
    if (!at)
      return null;
    const within = inside(node, at) || [at.endOffset, at.endOffset];
    return noteOrigin(this.page, { range: [at.startOffset, at.endOffset], open: [at.startOffset, within[0]],
      close: [within[1], at.endOffset], tag: node.tagName, attributes: JSON.stringify(attributesOf(node)) });
  }

  // A node that holds blocks, with its origin; null for what the schema does not take.
  holder(type, attrs, node, children) {
    const fitting = type.contentMatch.matchFragment(PageEditorParts.model.Fragment.from(children));
    if (!fitting || !fitting.validEnd)
      return null;
    const real = children.filter(child => !child.isFiller);
    const window = inside(node, this.placeOf(node));
    const o = this.container(node, real, window);
    return type.create(Object.assign({ o, a: attributesOf(node) }, attrs), children);
  }
  filler() {
    const node = S.nodes.bare.create();
    node.isFiller = true;
    return node;
  }

  island(node, inline) {
    const at = this.placeOf(node);
    const range = at && this.isWhole(node, at) && !this.isMisplaced(node) ? [at.startOffset, at.endOffset] : null;
    const source = range ? this.page.text.slice(...range) : sourceOf(node);
    const o = range ? noteOrigin(this.page, { range }) : null;
    return S.nodes[inline ? "inline_island" : "island"].create({ o, source, label: labelOf(node) });
  }
  isWhole(node, at) {
    const isOpen = isElement(node) && at.startTag && !at.endTag;
    return !isOpen || /^<[^>]*\/>$/.test(this.page.text.slice(at.startOffset, at.endOffset))
      || VoidTags.has(node.tagName);
  }
  // Something that stands in the tree elsewhere than in the text, as after tags that cross.
  isMisplaced(node) {
    const at = node.sourceCodeLocation;
    return (node.childNodes || []).some(child => !child.sourceCodeLocation
      || child.sourceCodeLocation.startOffset < at.startOffset || child.sourceCodeLocation.endOffset > at.endOffset
      || this.isMisplaced(child));
  }

  flow(nodes) {
    const blocks = [];
    let run = [];
    const flush = () => {
      const bare = this.bare(run);
      if (bare)
        blocks.push(bare);
      run = [];
    };
    for (const node of nodes) {
      const isBlankRun = run.every(one => isText(one) && IsBlank(one.value));
      if (isBlankRun && ((isComment(node) && BaseMarks.has(node.data)) || isColourSheet(node)))
        continue; // a mark of the base format stands in the space between blocks, and so does the sheet of ours
      if (isInline(node) || (!isBlankRun && !blockTags.has(node.tagName) && !E.inlineTags.has(node.tagName)
          && !(isComment(node) && BaseMarks.has(node.data)))) {
        run.push(node);
        continue;
      }
      flush();
      if (!(isComment(node) && BaseMarks.has(node.data)))
        blocks.push(this.block(node));
    }
    flush();
    return blocks;
  }
  flowOrFiller(nodes) {
    const blocks = this.flow(nodes);
    return blocks.length ? blocks : [this.filler()];
  }

  bare(run) {
    while (run.length && isText(run[0]) && IsBlank(run[0].value))
      run.shift();
    while (run.length && isText(run.at(-1)) && IsBlank(run.at(-1).value))
      run.pop();
    if (!run.length)
      return null;
    return S.nodes.bare.create({ o: this.runOrigin(run) }, this.inline(run));
  }
  runOrigin(run) {
    const [first, last] = [run[0].sourceCodeLocation, run.at(-1).sourceCodeLocation];
    if (!first || !last)
      return null;
    let [begin, end] = [first.startOffset, last.endOffset];
    while (begin < end && IsBlank(this.page.text[begin]))
      ++begin;
    while (end > begin && IsBlank(this.page.text[end - 1]))
      --end;
    return noteOrigin(this.page, { range: [begin, end], open: [begin, begin], close: [end, end] });
  }

  block(node) {
    if (!isElement(node) || !isHtml(node))
      return this.island(node, false);
    return (blockReaders[node.tagName] || (E.wrapperTags.has(node.tagName) || E.inlineTags.has(node.tagName)
      ? readWrapper : () => null))(this, node) || this.island(node, false);
  }

  // Text with its marks, spaces folded as they are shown.
  inline(nodes, keepsSpace = false) {
    const out = [];
    const add = (node, marks) => {
      if (isText(node))
        out.push({ text: keepsSpace ? node.value : node.value.replace(Space, " "), marks });
      else if (isElement(node) && isHtml(node) && E.inlineTags.has(node.tagName) && holdsText(node, keepsSpace))
        node.childNodes.forEach(child => add(child, [...marks, this.mark(node, marks.length)]));
      else
        out.push({ node: this.inlineAtom(node), marks });
    };
    // One mark for one element, whatever stands in it.
    const known = new Map();
    this.mark = (node, depth) => {
      if (!known.has(node))
        known.set(node, S.marks[E.markOfTag(node.tagName)].create({ tag: node.tagName, a: attributesOf(node),
          k: ++this.page.marks, d: depth }));
      return known.get(node);
    };
    nodes.forEach(node => add(node, []));
    return keepsSpace ? asNodes(out) : asNodes(trimmed(out));
  }
  inlineAtom(node) {
    if (isElement(node) && isHtml(node) && node.tagName === "br")
      return S.nodes.hard_break.create({ o: this.element(node), a: attributesOf(node) });
    if (isElement(node) && isHtml(node) && node.tagName === "img")
      return S.nodes.image.create({ o: this.element(node), a: attributesOf(node) });
    return this.island(node, true);
  }
}

// An element without text can't be a mark of any.
function holdsText(node, keepsSpace) {
  return node.childNodes.some(child => isText(child) ? child.value !== "" && (keepsSpace || !IsBlank(child.value))
    : !isComment(child) && (!E.inlineTags.has(child.tagName) || holdsText(child, keepsSpace)));
}
function trimmed(out) {
  let isAfterSpace = true;
  for (const one of out) {
    if (one.node) {
      isAfterSpace = one.node.type.name === "hard_break";
      continue;
    }
    if (isAfterSpace && one.text.startsWith(" "))
      one.text = one.text.slice(1);
    if (one.text)
      isAfterSpace = one.text.endsWith(" ");
  }
  let isEnd = true; // nothing that is seen follows on the line
  for (const one of [...out].reverse()) {
    if (!one.node && isEnd)
      one.text = one.text.replace(/ $/, "");
    isEnd = one.node ? one.node.type.name === "hard_break" : isEnd && one.text === "";
  }
  return out;
}
function asNodes(out) {
  return PageEditorParts.model.Fragment.from(out.filter(one => one.node || one.text)
    .map(one => one.node ? one.node.mark(setOf(one.marks)) : S.text(one.text, setOf(one.marks))));
}
const setOf = marks => marks.reduce((set, mark) => mark.addToSet(set), PageEditorParts.model.Mark.none);

function labelOf(node) {
  if (!isElement(node))
    return "";
  const isUnseen = E.inlineTags.has(node.tagName) || (E.invisibleTags.has(node.tagName) && node.tagName !== "script");
  if (isHtml(node) && isUnseen)
    return "";
  return "‹" + node.tagName + "›";
}
const sourceOf = node => PageEditorParts.serializeOuter(node);

const elementsOf = node => node.childNodes.filter(child => !isText(child) || !IsBlank(child.value));

function readTextBlock(name, extra = () => ({})) {
  return (reader, node) => {
    if (holdsBlock(node))
      return readWrapper(reader, node);
    return S.nodes[name].create(Object.assign({ o: reader.element(node), a: attributesOf(node) }, extra(node)),
      reader.inline(node.childNodes));
  };
}
function readWrapper(reader, node) {
  return reader.holder(S.nodes.wrapper, { tag: node.tagName }, node, reader.flow(node.childNodes));
}
function readQuote(reader, node) {
  return reader.holder(S.nodes.blockquote, {}, node, reader.flowOrFiller(node.childNodes));
}

// Code whose only marks are our own colours, or a <code> around all of it, is code that is coloured anew.
function readPre(reader, node) {
  if (holdsBlock(node))
    return null;
  const language = codeLanguage(node);
  const isOurs = all => all.every(child => isText(child) || (isElement(child) && child.tagName === "span"
    && /^qb-[a-z]+$/.test(E.attribute(attributesOf(child), "class") || "") && isOurs(child.childNodes)));
  const only = node.childNodes.length === 1 && node.childNodes[0].tagName === "code" ? node.childNodes[0] : node;
  const isCode = only !== node || /(^|\s)qb-code(\s|$)/.test(E.attribute(attributesOf(node), "class") || "");
  if (isCode && isOurs(only.childNodes)) {
    const text = textOf(only);
    return S.nodes.code_block.create({ o: reader.element(node), a: attributesOf(node), language },
      text ? [S.text(text)] : []);
  }
  return S.nodes.preformatted.create({ o: reader.element(node), a: attributesOf(node) },
    reader.inline(node.childNodes, true));
}
const textOf = node => isText(node) ? node.value : (node.childNodes || []).map(textOf).join("");
function codeLanguage(node) {
  const named = E.attribute(attributesOf(node), "data-language");
  const code = node.childNodes.find(isElement);
  const names = [node, code].filter(Boolean).map(one => E.attribute(attributesOf(one), "class") || "").join(" ");
  return named || (/(?:^|\s)lang(?:uage)?-([\w+#.-]+)/.exec(names) || ["", ""])[1];
}

function readList(name) {
  return (reader, node) => {
    const parts = elementsOf(node).map(child =>
      child.tagName === "li" ? reader.block(child) : reader.island(child, false));
    return elementsOf(node).some(isText) ? null : reader.holder(S.nodes[name], {}, node, parts);
  };
}
function readItem(reader, node) {
  return reader.holder(S.nodes.list_item, {}, node, reader.flowOrFiller(node.childNodes));
}
const isColourSheet = node => node.tagName === "style" && E.attribute(attributesOf(node), "id") === E.colourSheet;

// What belongs into a table by name; anything else there is an island.
function readParts(types) {
  return (reader, node) => elementsOf(node).map(child => types.includes(child.tagName) ? reader.block(child)
    : reader.island(child, false));
}
const tableParts = readParts(["caption", "thead", "tbody", "tfoot", "tr"]);
const sectionParts = readParts(["tr"]);
const rowParts = readParts(["td", "th"]);

// A body that the page does not write is none here either.
function readTable(reader, node) {
  const parts = [];
  for (const child of elementsOf(node)) {
    if (child.tagName === "tbody" && !child.sourceCodeLocation)
      parts.push(...sectionParts(reader, child));
    else
      parts.push(...tableParts(reader, { childNodes: [child] }));
  }
  return reader.holder(S.nodes.table, {}, node, parts);
}

const blockReaders = {
  p: readTextBlock("paragraph"),
  pre: readPre,
  hr: (reader, node) => S.nodes.horizontal_rule.create({ o: reader.element(node), a: attributesOf(node) }),
  blockquote: readQuote,
  ul: readList("bullet_list"),
  ol: readList("ordered_list"),
  li: readItem,
  table: readTable,
  caption: readTextBlock("caption"),
  thead: (reader, node) => readSection(reader, node),
  tbody: (reader, node) => readSection(reader, node),
  tfoot: (reader, node) => readSection(reader, node),
  tr: (reader, node) => reader.holder(S.nodes.table_row, {}, node, rowParts(reader, node)),
  td: (reader, node) => readCell(reader, node),
  th: (reader, node) => readCell(reader, node),
};
E.headings.forEach((tag, at) => { blockReaders[tag] = readTextBlock("heading", () => ({ level: at + 1 })); });
function readSection(reader, node) {
  return reader.holder(S.nodes.table_section, { tag: node.tagName }, node, sectionParts(reader, node));
}
function readCell(reader, node) {
  return reader.holder(S.nodes.table_cell, { tag: node.tagName }, node, reader.flowOrFiller(node.childNodes));
}

// Elements may stand in each other to this depth: what reads, shows and writes them calls itself as often.
const MostDepth = 500;
function isTooDeep(tree) {
  let level = [tree];
  for (let depth = 0; level.length && depth <= MostDepth; ++depth)
    level = level.flatMap(node => node.childNodes || []);
  return level.length > 0;
}

const find = (node, tag) => (node.childNodes || []).find(child => child.tagName === tag);

// Reads a page. What stands around its body is no part of the document. Null for one that has no body to edit, or is
// too deep.
E.read = function (text, base) {
  const page = new Page(text, base);
  const tree = PageEditorParts.parse(text, { sourceCodeLocationInfo: true });
  const html = find(tree, "html");
  const body = html && find(html, "body");
  if (!body || isTooDeep(tree))
    return null;
  const reader = new Reader(page);
  const blocks = reader.flow(body.childNodes);
  page.doc = S.nodes.doc.create(null, blocks.length ? blocks : [S.nodes.paragraph.create()]);
  page.window = bodyWindow(page, body, blocks);
  page.o = blocks.length ? reader.container(null, blocks, page.window)
    : noteOrigin(page, { range: page.window, tail: page.window });
  page.isEmptyBody = !blocks.length;
  page.styles = stylesOf(tree);
  page.body = attributesOf(body);
  page.headEnd = headEnd(html);
  page.isDarkAble = /<meta[^>]+color-scheme[^>]+dark/i.test(text.slice(0, 4096));
  return page;
};

function bodyWindow(page, body, blocks) {
  const ranges = blocks.map(block => E.origins[block.attrs.o]).filter(Boolean).map(origin => origin.range);
  const at = body.sourceCodeLocation;
  const first = ranges.length ? Math.min(...ranges.map(range => range[0])) : page.text.length;
  const last = ranges.length ? Math.max(...ranges.map(range => range[1])) : 0;
  const begin = at && at.startTag ? at.startTag.endOffset : first;
  const end = at && at.endTag ? at.endTag.startOffset : Math.max(begin, /\s*(<\/html\s*>\s*)?$/i.exec(page.text).index);
  return [begin, Math.max(begin, end, last)];
}
function headEnd(html) {
  const head = find(html, "head");
  const at = head && head.sourceCodeLocation;
  return at && at.endTag ? at.endTag.startOffset : null;
}
// The style sheets of a page: their texts, and the addresses of those that lie beside it.
function stylesOf(tree) {
  const styles = [];
  const walk = node => {
    if (node.tagName === "style")
      styles.push({ text: textOf(node) });
    const href = node.tagName === "link" && /stylesheet/i.test(E.attribute(attributesOf(node), "rel") || "")
      ? E.shownSource(E.attribute(attributesOf(node), "href")) : null;
    if (href)
      styles.push({ href });
    (node.childNodes || []).forEach(walk);
  };
  walk(tree);
  return styles;
}

// Blocks of markup from elsewhere: nothing of it is kept but what the editor makes itself.
E.readForeign = function (html) {
  const page = new Page(html, null);
  const tree = PageEditorParts.parse(html, { sourceCodeLocationInfo: true });
  const body = find(find(tree, "html"), "body");
  const blocks = body && !isTooDeep(tree) ? new Reader(page).flow(body.childNodes) : [];
  return PageEditorParts.model.Fragment.from(blocks.map(cleaned).filter(Boolean));
};
const keptAttributes = { image: ["src", "alt", "width", "height"], table_cell: ["colspan", "rowspan"],
  link: ["href", "title"] };
const kept = (name, attributes) => attributes.filter(one => (keptAttributes[name] || []).includes(one[0]));
function cleaned(node) {
  if (node.isText)
    return S.text(node.text, node.marks.filter(mark => mark.type.name !== "span").map(mark =>
      mark.type.create(Object.assign({}, mark.attrs, { a: kept(mark.type.name, mark.attrs.a) }))));
  if (/island$/.test(node.type.name))
    return null;
  if (node.type.name === "image" && !E.shownSource(E.attribute(node.attrs.a, "src")))
    return null;
  const children = [];
  node.forEach(child => {
    const clean = cleaned(child);
    if (clean)
      children.push(clean);
  });
  const attrs = Object.assign({}, node.attrs, { o: null });
  if (attrs.a)
    attrs.a = kept(node.type.name, attrs.a);
  const content = PageEditorParts.model.Fragment.from(children);
  return node.type.validContent(content) ? node.type.create(attrs, content) : node.type.createAndFill(attrs);
}
})(PageEditor);
