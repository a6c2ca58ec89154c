// What the page editor takes of its packages, under one name.
export * as commands from "prosemirror-commands";
export { dropCursor } from "prosemirror-dropcursor";
export { GapCursor, gapCursor } from "prosemirror-gapcursor";
export * as history from "prosemirror-history";
export * as inputRules from "prosemirror-inputrules";
export { keymap } from "prosemirror-keymap";
export * as model from "prosemirror-model";
export * as lists from "prosemirror-schema-list";
export * as state from "prosemirror-state";
export { EditorView, Decoration, DecorationSet } from "prosemirror-view";
export { parse, parseFragment, serialize, serializeOuter } from "parse5";
