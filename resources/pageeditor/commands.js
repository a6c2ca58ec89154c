// What the buttons and keys of the editor do.
(function (E) {
"use strict";
const P = PageEditorParts;
const S = E.schema;
const { TextSelection, NodeSelection, AllSelection } = P.state;
const { Fragment, Slice } = P.model;

// Marks that are made here begin and end with what is selected; none is told from its neighbours by a number.
const toggle = name => P.commands.toggleMark(S.marks[name], null, { removeWhenPresent: true });

// The text blocks of a selection become others, each in its place.
function become(name, attrs = {}) {
  return (state, dispatch) => {
    const { from, to } = state.selection;
    let isOther = false;
    state.doc.nodesBetween(from, to, node => {
      isOther = isOther || (node.isTextblock && (node.type.name !== name || node.attrs.level !== attrs.level));
    });
    if (isOther && dispatch)
      dispatch(state.tr.setBlockType(from, to, S.nodes[name], node =>
        Object.assign({}, attrs, { o: node.attrs.o, a: node.attrs.a || [] })).scrollIntoView());
    return isOther;
  };
}

function isInside(state, name) {
  const { $from } = state.selection;
  for (let depth = $from.depth; depth > 0; --depth) {
    if ($from.node(depth).type.name === name)
      return depth;
  }
  return 0;
}

// A list around the blocks, another kind of list, or none.
function toggleList(name) {
  const type = S.nodes[name];
  return (state, dispatch) => {
    const { $from } = state.selection;
    for (let depth = $from.depth; depth > 0; --depth) {
      const node = $from.node(depth);
      if (node.type === type)
        return P.lists.liftListItem(S.nodes.list_item)(state, dispatch);
      if (/_list$/.test(node.type.name)) {
        if (dispatch)
          dispatch(state.tr.setNodeMarkup($from.before(depth), type, { o: null, a: [] }));
        return true;
      }
    }
    return P.lists.wrapInList(type)(state, dispatch);
  };
}
function toggleQuote(state, dispatch) {
  return isInside(state, "blockquote") ? P.commands.lift(state, dispatch)
    : P.commands.wrapIn(S.nodes.blockquote)(state, dispatch);
}

// Puts a block behind the one that is being written in, which gives way where it is empty.
function insertBlock(node) {
  return (state, dispatch) => {
    const { $from } = state.selection;
    const depth = $from.depth;
    const isEmpty = depth > 0 && $from.parent.isTextblock && $from.parent.content.size === 0;
    const place = depth === 0 ? $from.pos : $from.after(depth);
    const parent = depth === 0 ? state.doc : $from.node(depth - 1);
    const index = depth === 0 ? $from.index(0) : $from.indexAfter(depth - 1);
    if (!parent.canReplaceWith(index, index, node.type))
      return false;
    if (dispatch) {
      const tr = isEmpty ? state.tr.replaceWith($from.before(depth), place, node) : state.tr.insert(place, node);
      const at = isEmpty ? $from.before(depth) : place;
      tr.setSelection(P.state.Selection.near(tr.doc.resolve(at + 1)));
      dispatch(tr.scrollIntoView());
    }
    return true;
  };
}

function newTable({ rows = 3, columns = 3, header = true }) {
  const cell = tag => S.nodes.table_cell.create({ tag }, S.nodes.bare.create());
  const row = tag => S.nodes.table_row.create(null, Array.from({ length: columns }, () => cell(tag)));
  const all = Array.from({ length: rows }, (_, at) => row(header && at === 0 ? "th" : "td"));
  return S.nodes.table.create({ a: [["border", "1"], ["cellpadding", "4"], ["cellspacing", "0"]] }, all);
}

// Where the selection stands in a table: the depths of its cell, row and table.
function inTable(state) {
  const cell = isInside(state, "table_cell");
  if (!cell)
    return null;
  const { $from } = state.selection;
  let table = cell - 1;
  while (table > 0 && $from.node(table).type.name !== "table")
    --table;
  return table ? { $from, cell, row: cell - 1, table } : null;
}
const span = (cell, name) => Math.max(1, Number(E.attribute(cell.attrs.a, name)) || 1);
function columnOf(row, index) {
  let column = 0;
  for (let at = 0; at < index; ++at)
    column += span(row.child(at), "colspan");
  return column;
}
// The index of the first cell of a row that begins at a column or behind it.
function indexOfColumn(row, column) {
  let at = 0;
  for (let passed = 0; at < row.childCount && passed < column; ++at)
    passed += span(row.child(at), "colspan");
  return at;
}
function addRow(isBehind) {
  return (state, dispatch) => {
    const place = inTable(state);
    if (!place)
      return false;
    if (dispatch) {
      const row = place.$from.node(place.row);
      const cells = [];
      row.forEach(cell => {
        if (cell.type.name === "table_cell")
          cells.push(S.nodes.table_cell.create({ tag: isBehind ? "td" : cell.attrs.tag,
            a: cell.attrs.a.filter(([name]) => name === "colspan") }, S.nodes.bare.create()));
      });
      const at = isBehind ? place.$from.after(place.row) : place.$from.before(place.row);
      const tr = state.tr.insert(at, S.nodes.table_row.create(null, cells));
      dispatch(tr.setSelection(TextSelection.near(tr.doc.resolve(at + 2))).scrollIntoView());
    }
    return true;
  };
}
// Each row of the table that the selection stands in, with its place, from the last to the first.
function rowsOf(place) {
  const rows = [];
  place.$from.node(place.table).descendants((node, at) => {
    if (node.type.name === "table_row")
      rows.push([node, place.$from.start(place.table) + at]);
    return node.type.name === "table_section";
  });
  return rows.reverse();
}
const cellPlace = (row, at, index) => {
  let place = at + 1;
  for (let passed = 0; passed < index; ++passed)
    place += row.child(passed).nodeSize;
  return place;
};
function addColumn(isBehind) {
  return (state, dispatch) => {
    const place = inTable(state);
    if (!place)
      return false;
    if (dispatch) {
      const index = place.$from.index(place.row);
      const column = columnOf(place.$from.node(place.row), index + (isBehind ? 1 : 0));
      const tr = state.tr;
      for (const [row, at] of rowsOf(place)) {
        const target = indexOfColumn(row, column);
        const beside = row.childCount ? row.child(Math.min(target, row.childCount - 1)) : null;
        const tag = beside && beside.attrs.tag === "th" ? "th" : "td";
        tr.insert(cellPlace(row, at, target), S.nodes.table_cell.create({ tag }, S.nodes.bare.create()));
      }
      dispatch(tr);
    }
    return true;
  };
}
function removeTable(state, dispatch) {
  const place = inTable(state);
  if (place && dispatch)
    dispatch(state.tr.delete(place.$from.before(place.table), place.$from.after(place.table)).scrollIntoView());
  return Boolean(place);
}
function removeRow(state, dispatch) {
  const place = inTable(state);
  if (!place)
    return false;
  if (rowsOf(place).length < 2)
    return removeTable(state, dispatch);
  if (dispatch)
    dispatch(state.tr.delete(place.$from.before(place.row), place.$from.after(place.row)).scrollIntoView());
  return true;
}
function removeColumn(state, dispatch) {
  const place = inTable(state);
  if (!place)
    return false;
  const row = place.$from.node(place.row);
  if (row.childCount < 2)
    return removeTable(state, dispatch);
  if (dispatch) {
    const column = columnOf(row, place.$from.index(place.row));
    const tr = state.tr;
    for (const [other, at] of rowsOf(place)) {
      const index = indexOfColumn(other, column);
      if (index < other.childCount && columnOf(other, index) === column) {
        const begin = cellPlace(other, at, index);
        tr.delete(begin, begin + other.child(index).nodeSize);
      }
    }
    dispatch(tr.scrollIntoView());
  }
  return true;
}
// To the next cell, or the one before; from the last one to a new row.
function goToCell(step) {
  return (state, dispatch) => {
    const place = inTable(state);
    if (!place)
      return false;
    const cells = [];
    for (const [row, at] of rowsOf(place).reverse())
      row.forEach((_, offset) => cells.push(at + 1 + offset));
    const next = cells[cells.indexOf(place.$from.before(place.cell)) + step];
    if (next === undefined)
      return step > 0 ? addRow(true)(state, dispatch) : true;
    if (dispatch)
      dispatch(state.tr.setSelection(TextSelection.near(state.doc.resolve(next + 1))).scrollIntoView());
    return true;
  };
}

// The link that the selection stands in, from its begin to its end.
E.linkAt = function (state) {
  const { $from } = state.selection;
  const mark = S.marks.link.isInSet(($from.nodeAfter || { marks: [] }).marks)
    || S.marks.link.isInSet(($from.nodeBefore || { marks: [] }).marks);
  if (!mark || !$from.parent.isTextblock)
    return null;
  let [from, to] = [null, null];
  $from.parent.forEach((child, offset) => {
    const begin = $from.start() + offset;
    const isOfIt = child.marks.some(one => one.eq(mark));
    if (isOfIt && (from === null || to === begin) && (to === null || to <= $from.pos || to === begin)) {
      from = to === begin ? from : begin;
      to = begin + child.nodeSize;
    }
  });
  return { mark, from, to, href: E.attribute(mark.attrs.a, "href") || "" };
};
// A link on what is selected, or a new one; an address that is empty takes the link away.
function setLink({ address, text, before = "", behind = "" }) {
  return (state, dispatch) => {
    const there = E.linkAt(state);
    const { from, to, empty } = state.selection;
    const range = there && empty ? there : { from, to };
    const tr = state.tr;
    const old = there ? there.mark.attrs.a : [];
    const mark = S.marks.link.create({ a: E.withAttribute(old, "href", address) });
    if (range.from === range.to || (text && text !== state.doc.textBetween(range.from, range.to))) {
      const marks = state.doc.resolve(range.from).marks().filter(one => one.type !== S.marks.link);
      const link = address ? mark.addToSet(marks) : marks;
      const nodes = [[before ? before + " " : "", marks], [text || address, link], [behind ? " " + behind : "", marks]]
        .filter(one => one[0]).map(([words, set]) => S.text(words, set));
      tr.replaceWith(range.from, range.to, nodes);
    } else {
      tr.removeMark(range.from, range.to, S.marks.link);
      if (address)
        tr.addMark(range.from, range.to, mark);
    }
    tr.removeStoredMark(S.marks.link);
    if (dispatch)
      dispatch(tr.scrollIntoView());
    return true;
  };
}

function insertPicture({ source, width, height, text = "" }) {
  const size = width && height ? [["width", String(width)], ["height", String(height)]] : [];
  const image = S.nodes.image.create({ a: [["border", "0"], ["src", source], ["alt", text], ...size] });
  return (state, dispatch) => {
    if (state.selection.$from.parent.type.spec.code)
      return insertBlock(S.nodes.paragraph.create(null, image))(state, dispatch);
    if (dispatch)
      dispatch(state.tr.replaceSelectionWith(image, false).scrollIntoView());
    return true;
  };
}

function setLanguage(language) {
  return (state, dispatch) => {
    const depth = isInside(state, "code_block");
    if (!depth)
      return false;
    if (dispatch) {
      const { $from } = state.selection;
      const node = $from.node(depth);
      dispatch(state.tr.setNodeMarkup($from.before(depth), null, Object.assign({}, node.attrs, { language })));
    }
    return true;
  };
}

function clearFormat(state, dispatch) {
  const { from, to } = state.selection;
  if (dispatch)
    dispatch(state.tr.removeMark(from, to));
  return from !== to;
}

const indentCode = (state, dispatch) => {
  if (!isInside(state, "code_block") && !isInside(state, "preformatted"))
    return false;
  if (dispatch)
    dispatch(state.tr.insertText("    "));
  return true;
};
const breakLine = (state, dispatch) => {
  if (dispatch)
    dispatch(state.tr.replaceSelectionWith(S.nodes.hard_break.create()).scrollIntoView());
  return true;
};

// By the names under which the program runs them; what is given there is a command's argument.
const chain = P.commands.chainCommands;
E.commands = {
  bold: () => toggle("strong"), italic: () => toggle("em"), underline: () => toggle("underline"),
  strike: () => toggle("strike"), inline_code: () => toggle("code"), subscript: () => toggle("sub"),
  superscript: () => toggle("sup"), clear_format: () => clearFormat,
  paragraph: () => become("paragraph"), heading: level => become("heading", { level }),
  code_block: language => (state, dispatch) => isInside(state, "code_block") ? become("paragraph")(state, dispatch)
    : become("code_block", { language: language || "" })(state, dispatch),
  code_language: setLanguage, quote: () => toggleQuote,
  bullet_list: () => toggleList("bullet_list"), ordered_list: () => toggleList("ordered_list"),
  indent: () => P.lists.sinkListItem(S.nodes.list_item), outdent: () => P.lists.liftListItem(S.nodes.list_item),
  rule: () => insertBlock(S.nodes.horizontal_rule.create()), table: size => insertBlock(newTable(size || {})),
  row_above: () => addRow(false), row_below: () => addRow(true), column_left: () => addColumn(false),
  column_right: () => addColumn(true), remove_row: () => removeRow, remove_column: () => removeColumn,
  remove_table: () => removeTable, link: setLink, unlink: () => setLink({ address: "" }), picture: insertPicture,
  undo: () => P.history.undo, redo: () => P.history.redo, select_all: () => P.commands.selectAll,
};

E.keys = function () {
  const base = P.commands.baseKeymap;
  const enter = chain(P.lists.splitListItem(S.nodes.list_item), base.Enter);
  return {
    "Mod-b": toggle("strong"), "Mod-i": toggle("em"), "Mod-u": toggle("underline"), "Mod-`": toggle("code"),
    "Mod-z": P.history.undo, "Mod-y": P.history.redo, "Shift-Mod-z": P.history.redo,
    Enter: enter, "Shift-Enter": chain(P.commands.exitCode, breakLine),
    "Mod-Enter": chain(P.commands.exitCode, breakLine),
    Tab: chain(indentCode, P.lists.sinkListItem(S.nodes.list_item), goToCell(1)),
    "Shift-Tab": chain(P.lists.liftListItem(S.nodes.list_item), goToCell(-1)),
  };
};

// What of the selection the buttons show.
E.stateOf = function (state) {
  const { $from, from, to, empty } = state.selection;
  const marks = empty ? state.storedMarks || $from.marks() : [];
  const has = type => empty ? Boolean(type.isInSet(marks)) : state.doc.rangeHasMark(from, to, type);
  const on = Object.keys(S.marks).filter(name => has(S.marks[name]));
  const code = isInside(state, "code_block");
  const link = E.linkAt(state);
  return {
    on, block: blockName($from),
    lists: ["bullet_list", "ordered_list", "blockquote"].filter(name => isInside(state, name)),
    language: code ? $from.node(code).attrs.language : "", isTable: Boolean(inTable(state)), isSelected: !empty,
    canUndo: P.history.undoDepth(state) > 0, canRedo: P.history.redoDepth(state) > 0,
    link: link ? link.href : "", text: link && empty ? state.doc.textBetween(link.from, link.to)
      : state.doc.textBetween(from, to, " ").slice(0, 200),
  };
};
function blockName($from) {
  const parent = $from.parent;
  return parent.type.name === "heading" ? "h" + parent.attrs.level : parent.type.name;
}
})(PageEditor);
