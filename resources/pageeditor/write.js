// Writes a document as pieces: ranges of texts that the program has, and new text. What was not touched is a range.
(function (E) {
"use strict";
const P = PageEditorParts;
const LineLength = 100;
const MarkTexts = E.baseMarks;
const Voids = new Set(["hr", "br", "img"]);

const escaped = text => text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;")
  .replace(/\u00a0/g, "&nbsp;");
const quoted = text => text.replace(/&/g, "&amp;").replace(/"/g, "&quot;").replace(/\u00a0/g, "&nbsp;");
const tagOf = (tag, attributes) => "<" + tag + (attributes || []).map(([name, value]) =>
  value === "" ? " " + name : ` ${name}="${quoted(value)}"`).join("") + ">";

const tags = {
  paragraph: () => "p", heading: node => "h" + node.attrs.level, code_block: () => "pre", preformatted: () => "pre",
  blockquote: () => "blockquote", bullet_list: () => "ul", ordered_list: () => "ol", list_item: () => "li",
  table: () => "table", table_row: () => "tr", caption: () => "caption", horizontal_rule: () => "hr",
};
const tagOfNode = node => node.attrs.tag || tags[node.type.name](node);

class Writer {
  // Anew: nothing but islands is taken from the page.
  constructor(isAnew, colours) {
    this.isAnew = isAnew;
    this.colours = colours; // (text, language) => [[length, kind], ...] or nothing
    this.pieces = [];
    this.written = ""; // the same as one text
    this.used = new Set();
    this.hasColours = false;
  }

  text(text) {
    if (text) {
      this.pieces.push(text);
      this.written += text;
    }
  }
  range(page, [begin, end]) {
    if (begin >= end)
      return;
    const text = page.text.slice(begin, end);
    this.written += text;
    const last = this.pieces.at(-1);
    if (Array.isArray(last) && last[0] === page.base && last[2] === begin)
      last[2] = end;
    else if (page.base === null)
      this.pieces.push(text);
    else
      this.pieces.push([page.base, begin, end]);
  }

  // The origin of a node, for the first that has it: of a paragraph that was parted, the other half has none.
  originOf(node) {
    const origin = E.origins[node.attrs.o];
    if (!origin || this.used.has(node.attrs.o))
      return null;
    this.used.add(node.attrs.o);
    return origin;
  }
  isUntouched(node, origin) {
    return !this.isAnew && origin && origin.node && (origin.node === node || origin.node.eq(node));
  }

  // The blocks of a container, with the space between them that they had.
  blocks(node, origin, isTight) {
    const isKept = Boolean(origin && origin.tail && !this.isAnew); // the space between the blocks is
    const indent = this.indentOf(node);
    const from = this.written.length;
    const marks = isKept ? [] : (origin || E.origins[node.attrs.o] || {}).marks || [];
    if (marks.includes(MarkTexts[0]))
      this.text("\n" + MarkTexts[0]);
    let before = null;
    node.forEach((child, _, at) => {
      const own = this.originOf(child);
      if (own && own.lead && isKept)
        this.range(own.page, own.lead);
      else if (!(isTight && at === 0) && !isEmptyBare(child))
        this.text(indent);
      if (isTight && isNewItemText(node, child))
        this.text(this.inline(child));
      else
        this.block(child, own, this.endsBefore(node, at, own), before);
      before = child;
    });
    if (marks.includes(MarkTexts[1]))
      this.text("\n" + MarkTexts[1]);
    if (isKept) {
      this.keepMarks(origin, from);
      this.range(origin.page, origin.tail);
    }
    else if (!isTight && node.childCount)
      this.text(indent.slice(0, -1) || "\n");
  }
  // Whether what follows a block is what followed it before, so that an end tag that was not there can stay away.
  endsBefore(parent, at, own) {
    if (!own || !own.lead)
      return false;
    const next = at + 1 < parent.childCount ? E.origins[parent.child(at + 1).attrs.o] : null;
    return at + 1 === parent.childCount || Boolean(next && next.lead && next.page === own.page
      && next.lead[0] === own.range[1]);
  }
  // The space ahead of a new block: that ahead of its neighbours, where it is a line of its own.
  indentOf(node) {
    let found = "\n";
    node.forEach(child => {
      const origin = E.origins[child.attrs.o];
      const lead = origin && origin.lead ? origin.page.text.slice(...origin.lead) : "";
      const line = /\n[ \t]*$/.exec(lead);
      if (line)
        found = line[0];
    });
    return found;
  }
  // The marks of the base format stay in their container when the blocks beside them have gone.
  keepMarks(origin, from) {
    const source = origin.page.text.slice(...origin.range);
    const direct = (origin.marks || []).filter(mark => !this.written.includes(mark, from)
      && !origin.page.text.slice(...origin.tail).includes(mark));
    if (source && direct.includes(MarkTexts[0]))
      this.insertAt(from, "\n" + MarkTexts[0]);
    if (source && direct.includes(MarkTexts[1]))
      this.text("\n" + MarkTexts[1]);
  }
  insertAt(place, text) {
    let passed = 0;
    for (let at = 0; at <= this.pieces.length; ++at) {
      if (passed === place) {
        this.pieces.splice(at, 0, text);
        this.written = this.written.slice(0, place) + text + this.written.slice(place);
        return;
      }
      const piece = this.pieces[at];
      passed += piece === undefined ? 0 : Array.isArray(piece) ? piece[2] - piece[1] : piece.length;
    }
    this.text(text);
  }

  block(node, origin, mayStayOpen, before) {
    if (this.isUntouched(node, origin)) {
      this.range(origin.page, origin.range);
      if (!mayStayOpen && origin.open && origin.close[0] === origin.close[1] && origin.tag)
        this.text(`</${origin.tag}>`);
      return;
    }
    if (node.type.name === "island")
      return this.island(node);
    if (node.type.name === "bare")
      return this.bare(node, before, origin);
    const tag = tagOfNode(node);
    const isSame = origin && !this.isAnew && origin.open && origin.tag === tag
      && origin.attributes === JSON.stringify(node.attrs.a);
    this.node(node, origin, tag, isSame, mayStayOpen);
  }
  node(node, origin, tag, isSame, mayStayOpen) {
    const attributes = node.type.name === "code_block" ? codeAttributes(node) : this.attributesOf(node, origin);
    if (isSame && node.type.name !== "code_block")
      this.range(origin.page, origin.open);
    else
      this.text(tagOf(tag, attributes));
    if (Voids.has(tag))
      return;
    if (node.type.name === "code_block")
      this.code(node);
    else if (node.isTextblock)
      this.text(this.inline(node));
    else
      this.blocks(node, isSame ? origin : null, isTight(node));
    if (isSame && node.type.name !== "code_block" && (mayStayOpen || origin.close[0] < origin.close[1]))
      this.range(origin.page, origin.close);
    else
      this.text(`</${tag}>`);
  }
  // The half of what was parted has no name of its own.
  attributesOf(node, origin) {
    return origin || node.attrs.o === null ? node.attrs.a : node.attrs.a.filter(([name]) => name !== "id");
  }
  island(node) {
    const origin = E.origins[node.attrs.o];
    if (origin)
      this.range(origin.page, origin.range);
    else
      this.text(node.attrs.source);
  }
  // Two texts beside each other would be one; a new one is a paragraph like any.
  bare(node, before, origin) {
    if (isEmptyBare(node))
      return;
    const needsTag = before && (before.type.name === "bare" || !origin);
    this.text(needsTag ? "<p>" : "");
    this.text(this.inline(node));
    this.text(needsTag ? "</p>" : "");
  }

  code(node) {
    const text = node.textContent;
    const pieces = this.colours(text, node.attrs.language) || [];
    let at = 0;
    if (text.startsWith("\n"))
      this.text("\n"); // the first line's end of a <pre> does not count
    for (const [length, kind] of pieces) {
      const part = escapedCode(text.slice(at, at + length));
      this.text(kind ? `<span class="qb-${kind}">${part}</span>` : part);
      this.hasColours = this.hasColours || Boolean(kind);
      at += length;
    }
    this.text(escapedCode(text.slice(at)));
  }

  // Text with its marks as elements: what has a mark in common stands in one element.
  inline(node) {
    const keepsSpace = node.type.spec.code;
    const open = [];
    let out = keepsSpace && node.textContent.startsWith("\n") ? "\n" : "";
    const close = count => {
      while (open.length > count)
        out += `</${open.pop().attrs.tag}>`;
    };
    node.forEach(child => {
      const marks = [...child.marks].sort((a, b) => a.attrs.d - b.attrs.d);
      let common = 0;
      while (common < open.length && common < marks.length && open[common].eq(marks[common]))
        ++common;
      close(common);
      for (const mark of marks.slice(common)) {
        out += tagOf(mark.attrs.tag, mark.attrs.a);
        open.push(mark);
      }
      out += child.isText ? escaped(keepsSpace ? child.text : spaced(child.text)) : this.atom(child);
    });
    close(0);
    return keepsSpace ? out : wrapped(out);
  }
  atom(node) {
    const origin = E.origins[node.attrs.o];
    if (node.type.name === "inline_island")
      return Kept + (this.atoms.push(origin ? [origin.page, origin.range] : node.attrs.source) - 1) + Kept;
    return tagOf(node.type.name === "image" ? "img" : "br", node.attrs.a);
  }
}
E.Writer = Writer;

// An island in a text is written as it stands, so it is put in when the text is cut into pieces.
const Kept = "\u0000";
const plainText = Writer.prototype.text;
Writer.prototype.text = function (text) {
  if (!text || !text.includes(Kept))
    return plainText.call(this, text);
  text.split(Kept).forEach((part, at) => {
    if (at % 2 === 0)
      return plainText.call(this, part);
    const atom = this.atoms[Number(part)];
    return Array.isArray(atom) ? this.range(...atom) : plainText.call(this, atom);
  });
};

const escapedCode = text => text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");
const isEmptyBare = node => node.type.name === "bare" && node.childCount === 0;
// Spaces that were typed beside each other, as a page shows them.
const spaced = text => text.replace(/ {2,}/g, spaces => "\u00a0".repeat(spaces.length - 1) + " ");
// The text of a new item of a list needs no paragraph.
const isNewItemText = (item, child) => item.type.name === "list_item" && item.attrs.o === null
  && child.type.name === "paragraph" && child.attrs.a.length === 0;
function isTight(node) {
  if (!["list_item", "table_cell"].includes(node.type.name))
    return node.type.name === "wrapper" && node.childCount === 1 && node.firstChild.type.name === "bare";
  return node.firstChild.isTextblock && node.childCount === 1;
}
function codeAttributes(node) {
  const { language, a } = node.attrs;
  const names = (E.attribute(a, "class") || "").split(/\s+/).filter(name => name && name !== "qb-code");
  const classed = E.withAttribute(a, "class", ["qb-code", ...names].join(" "));
  return E.withAttribute(classed, "data-language", language || null);
}
// Lines that can be read: broken at spaces outside of tags.
function wrapped(text) {
  if (text.length <= LineLength)
    return text;
  let out = "";
  let lineBegin = 0;
  let lastSpace = -1;
  let isInTag = false;
  for (let at = 0; at < text.length; ++at) {
    isInTag = text[at] === "<" ? true : text[at] === ">" ? false : isInTag;
    if (text[at] === " " && !isInTag)
      lastSpace = at;
    if (at - lineBegin >= LineLength && lastSpace > lineBegin) {
      out += text.slice(lineBegin, lastSpace) + "\n";
      lineBegin = lastSpace + 1;
    }
  }
  return out + text.slice(lineBegin);
}

// What a document says, without where it came from.
E.signature = function (doc) {
  const numbers = new Map();
  const number = k => k === null ? 0 : numbers.get(k) || numbers.set(k, numbers.size + 1).get(k);
  const of = node => {
    if (node.isText)
      return [node.text.replace(/\u00a0/g, " "), [...node.marks].sort((a, b) => a.attrs.d - b.attrs.d)
        .map(mark => [mark.attrs.tag, mark.attrs.a, number(mark.attrs.k) && 0])];
    const children = [];
    node.forEach(child => {
      if (!isEmptyBare(child))
        children.push(of(child));
    });
    if (node.type.name === "bare")
      return ["paragraph", "", [], children];
    if (/island$/.test(node.type.name))
      return ["island", node.attrs.source];
    return [node.type.name, node.attrs.tag || node.attrs.level || node.attrs.language || "",
      node.type.name === "code_block" ? "" : node.attrs.a, children];
  };
  return JSON.stringify(of(doc));
};

// The style sheet of coloured code goes into the head of a page that has coloured code.
const ColourSheet = E.colourSheet;
function withColourSheet(writer, page, sheet) {
  const isThere = (page.text.slice(0, page.window[0]) + writer.written).includes(ColourSheet);
  return writer.hasColours && sheet && !isThere ? `<style id="${ColourSheet}">\n${sheet}</style>\n` : "";
}

function write(page, doc, isAnew, colours, sheet) {
  const body = new Writer(isAnew, colours);
  body.atoms = [];
  const origin = E.origins[page.o];
  const marks = MarkTexts.filter(mark => page.text.includes(mark));
  body.blocks(doc, origin, false);
  for (const mark of marks.filter(mark => !body.written.includes(mark)))
    mark === MarkTexts[0] ? body.insertAt(0, mark + "\n") : body.text(mark + "\n");
  const whole = new Writer(isAnew, colours);
  const style = withColourSheet(body, page, sheet);
  const [begin, end] = page.window;
  const head = page.headEnd !== null && page.headEnd <= begin ? page.headEnd : begin;
  whole.range(page, [0, head]);
  whole.text(style);
  whole.range(page, [head, begin]);
  for (const piece of body.pieces)
    Array.isArray(piece) ? whole.range(E.pages[piece[0]], [piece[1], piece[2]]) : whole.text(piece);
  whole.range(page, [end, page.text.length]);
  return whole;
}

// The pieces of a page with another document. Read again they must say what the document says; where the page's
// own markup is too crooked for that, its body is written anew.
E.write = function (page, doc, colours = () => null, sheet = "") {
  const wanted = E.signature(doc);
  let written = write(page, doc, false, colours, sheet);
  if (!E.says(written.written, wanted))
    written = write(page, doc, true, colours, sheet);
  return { pieces: written.pieces, text: written.written };
};
E.says = function (text, wanted) {
  const count = E.origins.length;
  const again = E.read(text, null);
  E.origins.length = count;
  return again !== null && E.signature(again.doc) === wanted;
};
E.writeAnew = (page, doc) => write(page, doc, true, () => null, "").written;

// A page as a browser takes it, its spaces folded: two pages of one tree look and act alike.
E.treeOf = function (text) {
  const out = [];
  const walk = (node, keepsSpace) => (node.childNodes || []).forEach(child => {
    if (child.nodeName === "#text") {
      const words = keepsSpace ? child.value : child.value.replace(/[ \t\n\r\f]+/g, " ").trim();
      out.push(...(words ? ["\"" + words] : []));
    } else if (child.nodeName === "#comment") {
      out.push("!" + child.data);
    } else if (child.tagName) {
      out.push("<" + child.tagName + JSON.stringify(child.attrs.map(one => [one.name, one.value])));
      walk(child, keepsSpace || ["pre", "script", "style", "textarea"].includes(child.tagName));
      out.push(">");
    }
  });
  walk(P.parse(text), false);
  return out.join("\n");
};

// Notes in each origin the node that was made of it.
E.noteNodes = function (doc) {
  doc.descendants(node => {
    const origin = node.attrs.o === null ? null : E.origins[node.attrs.o];
    if (origin && !origin.node)
      origin.node = node;
    return !node.isTextblock;
  });
};

// Whether nothing is left to see.
E.isEmpty = function (doc) {
  let isEmpty = true;
  doc.descendants(node => {
    const isThing = node.isText ? /[^\s]/.test(node.text) : node.isAtom && !["hard_break"].includes(node.type.name)
      && (node.type.name === "image" || node.attrs.label || node.type.name === "horizontal_rule");
    isEmpty = isEmpty && !isThing;
  });
  return isEmpty;
};
})(PageEditor);
