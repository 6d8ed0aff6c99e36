"use strict";
// What the page does beyond showing the picture: tooltips, search, zoom and the keyboard.
//
// The picture is the SVG as it was drawn; each node has a group in it whose id is "n" and the node's number.
// The nodes' labels, values and parents stand in the JSON of the element "data", in pre-order; nodes that are
// not drawn are there only to name the path of those that are. Unzoomed, the picture is left exactly as it
// was drawn. Zoomed, each group gets pieces of its own in place of the drawn ones, so that what a reader of
// the screen knows of a node stays one element all the time.
(() => {
  const byId = (id) => document.getElementById(id);
  const data = JSON.parse(byId("data").textContent);
  const picture = byId("picture");
  const svg = picture.querySelector("svg");
  const [WIDTH, HEIGHT] = svg.getAttribute("viewBox").split(" ").slice(2).map(Number);
  const UNIT = WIDTH / parseFloat(document.body.style.getPropertyValue("--picture-width")); // pixels of a layout unit
  const NONE = -1;

  // ---- small things

  function element(name, attributes) {
    const made = document.createElementNS(svg.namespaceURI, name);
    for (const [key, value] of Object.entries(attributes || {})) made.setAttribute(key, value);
    return made;
  }

  function html(name, className, text) {
    const made = document.createElement(name);
    if (className) made.className = className;
    if (text !== undefined) made.textContent = text;
    return made;
  }

  const grouped = (value) => String(value).replace(/\B(?=(\d{3})+(?!\d))/g, ",");

  function share(part, whole) {
    if (!(whole > 0)) return "";
    const percent = (100 * part) / whole;
    if (percent > 0 && percent < 0.01) return "below 0.01 %";
    return `${percent >= 10 ? percent.toFixed(1) : percent.toFixed(2)} %`;
  }

  // ---- the nodes

  /** Rectangles are [x, y, width, height] in the picture's pixels, y downwards. */
  const nodes = data.nodes.map((row, index) => ({
    index,
    parent: row[0],
    label: row[1],
    value: row[2],
    below: row[3] || 0,
    color: row[4],
    end: index + 1, // behind the last node below it
    group: byId(`n${index}`),
    children: [], // those that are drawn, in reading order
    place: 0, // among its siblings, from 1
    level: 1,
    drawn: null, // rectangle as drawn
    box: null, // rectangle as shown
    pieces: null, // of the drawn picture, in order
    background: null,
    text: null,
    zoomed: null, // the pieces that take their place
  }));
  const tops = []; // drawn nodes that are in no drawn node
  const order = []; // all drawn nodes, in reading order

  const numberOf = (target, name) => Number(target.getAttribute(name));
  const siblingsOf = (node) => (isInTree(node.parent) ? nodes[node.parent].children : tops);
  const isInTree = (index) => index !== NONE && nodes[index].group !== null;

  /** An image may be written once and used in many places. */
  function sourceOf(piece) {
    return piece.tagName === "use" ? byId(piece.getAttribute("xlink:href").slice(1)) : piece;
  }

  function boxOf(piece) {
    const source = sourceOf(piece);
    return [numberOf(piece, "x"), numberOf(piece, "y"), numberOf(source, "width"), numberOf(source, "height")];
  }

  /** What marks a node as selected or highlighted: an outline, or a plate one unit inside its edges. */
  function isMark(piece, background) {
    if (piece.tagName === "rect") return piece.hasAttribute("stroke");
    if (!background || (piece.tagName !== "image" && piece.tagName !== "use")) return false;
    const [, , width, height] = boxOf(piece);
    const [, , wholeWidth, wholeHeight] = boxOf(background);
    return width >= wholeWidth - 2 * UNIT - 1 && height >= wholeHeight - 2 * UNIT - 1;
  }

  /**
   * The picture's marks give way to the page's own. Images that are used in many groups are kept where no zoom takes them
   * away with the group that uses them first.
   */
  function readGroup(node) {
    for (const piece of [...node.group.children]) {
      if (piece.tagName === "defs") {
        svg.prepend(piece);
      } else if (isMark(piece, node.background)) {
        piece.remove();
      } else if (piece.tagName === "text") {
        node.text = piece;
      } else if (!node.background && piece.tagName !== "clipPath") {
        node.background = piece;
      }
    }
    node.drawn = boxOf(node.background);
    node.box = node.drawn;
    if (node.label === 0) node.label = node.text.textContent;
    node.pieces = [...node.group.childNodes];
  }

  function readNodes() {
    for (const node of nodes) if (node.group) readGroup(node);
    for (let i = nodes.length - 1; i > 0; --i) {
      const { parent, end } = nodes[i];
      if (parent !== NONE && nodes[parent].end < end) nodes[parent].end = end;
    }
    for (const node of nodes) if (node.group) siblingsOf(node).push(node);
    const inReadingOrder = (a, b) => a.drawn[1] - b.drawn[1] || a.drawn[0] - b.drawn[0] || a.index - b.index;
    for (const siblings of [tops, ...nodes.map((node) => node.children)]) {
      siblings.sort(inReadingOrder);
      for (const [i, node] of siblings.entries()) node.place = i + 1;
    }
    const waiting = [...tops].reverse();
    while (waiting.length > 0) {
      const node = waiting.pop();
      node.level = isInTree(node.parent) ? nodes[node.parent].level + 1 : 1;
      order.push(node);
      for (let i = node.children.length - 1; i >= 0; --i) waiting.push(node.children[i]);
    }
  }

  function pathOf(node) {
    const path = [];
    for (let i = node.parent; i !== NONE; i = nodes[i].parent) path.push(nodes[i]);
    return path.reverse();
  }

  const nameOf = (node) => node.label || "(no label)";

  /** "1,234 triangles" for a model, "value 1,234" for a tree file. */
  function valueOf(node) {
    const value = grouped(node.value);
    return data.unit === "value" ? `value ${value}` : `${value} ${node.value === 1 ? data.unit.slice(0, -1) : data.unit}`;
  }

  function spokenName(node) {
    const ofTotal = share(Number(node.value), Number(data.total));
    return `${nameOf(node)}, ${valueOf(node)}${ofTotal ? `, ${ofTotal} of total` : ""}`;
  }

  // ---- what a screen reader is told

  const ofGroup = new Map();

  function describe() {
    svg.setAttribute("role", "tree");
    svg.setAttribute("aria-label", `Parts of ${data.title}`);
    for (const group of svg.querySelectorAll(":scope > g")) group.setAttribute("role", "none");
    for (const node of order) {
      const { group } = node;
      ofGroup.set(group, node);
      group.setAttribute("role", "treeitem");
      group.setAttribute("tabindex", "-1");
      group.setAttribute("aria-label", spokenName(node));
      group.setAttribute("aria-level", node.level);
      group.setAttribute("aria-posinset", node.place);
      group.setAttribute("aria-setsize", siblingsOf(node).length);
      group.setAttribute("aria-selected", "false");
      if (node.children.length > 0) group.setAttribute("aria-expanded", "true");
      else if (node.below > 0) group.setAttribute("aria-expanded", "false");
    }
  }

  function announce(text) {
    byId("news").textContent = text;
  }

  // ---- the background that is one image for all nodes (the cushion's)

  let backdrop = null;

  function findBackdrop() {
    for (const node of order) {
      if (node.background.tagName === "rect" || node.color) continue;
      const plain = element("rect", { class: "a" });
      setBox(plain, node.drawn);
      backdrop = { piece: node.background, box: node.drawn };
      node.pieces = node.pieces.map((piece) => (piece === node.background ? plain : piece));
      node.background = plain;
      node.group.replaceChildren(...node.pieces);
      svg.insertBefore(backdrop.piece, svg.querySelector(":scope > g"));
      backdrop.piece.setAttribute("preserveAspectRatio", "none");
      return;
    }
  }

  /** A node lies over what it is in, or the pointer would not find it. */
  function bringIntoOrder() {
    const isBehind = (a, b) => a.group.compareDocumentPosition(b.group) & Node.DOCUMENT_POSITION_PRECEDING;
    if (!order.some((node) => isInTree(node.parent) && isBehind(nodes[node.parent], node))) return;
    for (const node of order) node.group.parentNode.append(node.group);
  }

  // ---- zoom: where the nodes go

  let root = NONE; // the node that fills the picture; none for all of them
  const earlierRoots = [];

  const endOf = (index) => (index === NONE ? nodes.length : nodes[index].end);
  const isShown = (node) => root === NONE || (node.index >= root && node.index < endOf(root));

  function bounds(some) {
    let [left, top, right, bottom] = [Infinity, Infinity, -Infinity, -Infinity];
    for (const { drawn } of some) {
      left = Math.min(left, drawn[0]);
      top = Math.min(top, drawn[1]);
      right = Math.max(right, drawn[0] + drawn[2]);
      bottom = Math.max(bottom, drawn[1] + drawn[3]);
    }
    return [left, top, right - left, bottom - top];
  }

  function mapped(box, from, to) {
    const x = to[2] / Math.max(from[2], 1e-9);
    const y = to[3] / Math.max(from[3], 1e-9);
    return [to[0] + (box[0] - from[0]) * x, to[1] + (box[1] - from[1]) * y, box[2] * x, box[3] * y];
  }

  /** Side by side along `axis` (0 or 1), all equally high or wide. */
  function isStrip(children, axis) {
    const other = 1 - axis;
    const [first] = children;
    return children.every(({ drawn }) => Math.abs(drawn[other] - first.drawn[other]) <= 1 &&
      Math.abs(drawn[other + 2] - first.drawn[other + 2]) <= 1);
  }

  /** Grows the nodes of a strip and leaves the gaps between them as they are. */
  function placeStrip(children, axis, from, to) {
    const sorted = [...children].sort((a, b) => a.drawn[axis] - b.drawn[axis]);
    const sum = sorted.reduce((all, { drawn }) => all + drawn[axis + 2], 0);
    const factor = (to[axis + 2] - (from[axis + 2] - sum)) / Math.max(sum, 1e-9);
    let at = to[axis];
    let before = from[axis];
    for (const node of sorted) {
      at += node.drawn[axis] - before;
      node.box = mapped(node.drawn, from, to);
      node.box[axis] = at;
      node.box[axis + 2] = node.drawn[axis + 2] * factor;
      at += node.box[axis + 2];
      before = node.drawn[axis] + node.drawn[axis + 2];
    }
  }

  /** Frame and label band of a node keep their size; its children share what has become free. */
  function placeChildren(node) {
    const { children, drawn, box } = node;
    const from = bounds(children);
    const to = [box[0] + from[0] - drawn[0], box[1] + from[1] - drawn[1],
      box[2] - (drawn[2] - from[2]), box[3] - (drawn[3] - from[3])];
    if (isStrip(children, 0)) placeStrip(children, 0, from, to);
    else if (isStrip(children, 1)) placeStrip(children, 1, from, to);
    else for (const child of children) child.box = mapped(child.drawn, from, to);
  }

  function contains(outer, inner) {
    return inner[0] >= outer[0] - 1 && inner[1] >= outer[1] - 1 &&
      inner[0] + inner[2] <= outer[0] + outer[2] + 1 && inner[1] + inner[3] <= outer[1] + outer[3] + 1;
  }

  /** Maps a coordinate: gaps before nodes stay as wide as they are, everything else grows evenly. */
  function growing(some, axis, from, to) {
    const WIDEST = 4 * UNIT;
    const ascending = (values) => [...new Set(values)].sort((a, b) => a - b);
    const ends = ascending(some.map(({ drawn }) => drawn[axis] + drawn[axis + 2]));
    const gaps = []; // each with its start, its width, and the width of those before it
    let sum = 0;
    let next = 0;
    for (const start of ascending(some.map(({ drawn }) => drawn[axis]))) {
      while (next < ends.length && ends[next] <= start) ++next;
      const width = next > 0 ? start - ends[next - 1] : 0;
      if (width <= 0 || width > WIDEST) continue;
      gaps.push({ start: ends[next - 1], width, before: sum });
      sum += width;
    }
    const factor = Math.max(0, to[axis + 2] - sum) / Math.max(from[axis + 2] - sum, 1e-9);
    return (position) => {
      let [low, high] = [0, gaps.length];
      while (low < high) {
        const middle = (low + high) >> 1;
        if (gaps[middle].start < position) low = middle + 1;
        else high = middle;
      }
      const last = gaps[low - 1];
      const kept = last ? last.before + Math.min(last.width, position - last.start) : 0;
      return to[axis] + kept + (position - from[axis] - kept) * factor;
    };
  }

  const HIGHEST_ON_PAPER = Number(picture.dataset.highestOnPaper); // that is legible on one sheet
  let shownHeight = HEIGHT;

  /** A picture that is higher than the window becomes no higher than its content needs. */
  function fitHeight(needed) {
    const ofWindow = innerHeight * (WIDTH / Math.max(svg.clientWidth, 1));
    const height = Math.min(HEIGHT, Math.max(ofWindow * 0.8, needed));
    if (height === shownHeight) return; // telling the browser so would cost a layout
    shownHeight = height;
    svg.setAttribute("viewBox", `0 0 ${WIDTH} ${shownHeight}`);
    svg.setAttribute("height", shownHeight);
    picture.classList.toggle("tall", shownHeight > WIDTH && shownHeight > HIGHEST_ON_PAPER * UNIT);
  }

  /** Gives the nodes of the subtree their rectangles in the zoomed picture. */
  function placeSubtree() {
    const some = order.filter(isShown);
    const from = bounds(some);
    fitHeight(from[3]);
    const whole = [0, 0, WIDTH, shownHeight];
    if (backdrop) {
      for (const node of some) node.box = mapped(node.drawn, from, whole);
      setBox(backdrop.piece, mapped(backdrop.box, from, whole));
    } else if (contains(nodes[root].drawn, from)) {
      nodes[root].box = whole;
      for (const node of some) if (node.children.length > 0) placeChildren(node);
    } else {
      const [toX, toY] = [0, 1].map((axis) => growing(some, axis, from, whole));
      for (const node of some) {
        const [x, y, width, height] = node.drawn;
        node.box = [toX(x), toY(y), toX(x + width) - toX(x), toY(y + height) - toY(y)];
      }
    }
  }

  // ---- zoom: how a node looks

  function setBox(target, box) {
    target.setAttribute("x", box[0]);
    target.setAttribute("y", box[1]);
    target.setAttribute("width", Math.max(0, box[2]));
    target.setAttribute("height", Math.max(0, box[3]));
  }

  const measuring = document.createElement("canvas").getContext("2d");
  let fontFamily = "sans-serif";
  let measuredSize = 0;

  /** The label or, with full stops, as much of it as is no wider than `room`; empty for nothing. */
  function fitting(label, size, room) {
    if (size !== measuredSize) measuring.font = `${size}px ${fontFamily}`; // takes long
    measuredSize = size;
    const full = measuring.measureText(label).width;
    if (full <= room) return label;
    const characters = [...label];
    let count = Math.min(characters.length - 1, Math.ceil((characters.length * room) / full));
    for (; count > 0; --count) {
      const text = `${characters.slice(0, count).join("")}...`;
      if (measuring.measureText(text).width <= room) return text;
    }
    return "";
  }

  /** Pieces besides the background stand at the node's left or upper edge, or about its middle. */
  function isCentred(position, size, from, extent) {
    return Math.abs(position + size / 2 - (from + extent / 2)) < 1.5 * UNIT && position - from > 3 * UNIT;
  }

  function movedDown(y, height, node) {
    const [, from, , extent] = node.drawn;
    const [, to, , newExtent] = node.box;
    const isAtEdge = y - from <= 2.5 * UNIT && !isCentred(y, height, from, extent);
    return isAtEdge ? to + y - from : to + newExtent / 2 + y - (from + extent / 2);
  }

  function makeZoomed(node) {
    const made = { background: null, grid: null, text: null, icons: [] };
    const isImage = node.background.tagName !== "rect";
    made.background = isImage ? element("rect", { fill: node.color }) : node.background.cloneNode();
    if (isImage) made.grid = element("rect", { fill: `url(#${isBright(node.color) ? "dark" : "light"}-grid)` });
    for (const piece of node.pieces) {
      if (piece !== node.background && (piece.tagName === "use" || piece.tagName === "image"))
        made.icons.push({ drawn: piece, piece: piece.cloneNode() });
    }
    if (node.text) {
      made.text = node.text.cloneNode();
      for (const name of ["textLength", "lengthAdjust", "clip-path"]) made.text.removeAttribute(name);
    }
    return made;
  }

  function isBright(color) {
    const [red, green, blue] = [1, 3, 5].map((at) => parseInt(color.slice(at, at + 2), 16));
    return red + green + blue > 384;
  }

  /** How much of a line of text is above its baseline and below it, by the size of its font. */
  const lines = new Map();

  function readLines() {
    for (const line of svg.dataset.lines.split(";")) {
      const [em, above, below] = line.split(" ").map(Number);
      lines.set(em, [above, below]);
    }
  }

  function placeText(node, made) {
    const { text, drawn, box } = node;
    const size = numberOf(text, "font-size");
    const [above, below] = lines.get(size) || [size, 0];
    const x = numberOf(text, "x");
    const isInMiddle = isCentred(x, numberOf(text, "textLength"), drawn[0], drawn[2]);
    const room = isInMiddle ? box[2] - 4 * UNIT : box[2] - (x - drawn[0]) - 2 * UNIT;
    const shown = box[3] >= above ? fitting(node.label, size, room) : "";
    if (!shown) return false;
    made.text.textContent = shown;
    made.text.setAttribute("text-anchor", isInMiddle ? "middle" : "start");
    made.text.setAttribute("x", isInMiddle ? box[0] + box[2] / 2 : box[0] + x - drawn[0]);
    made.text.setAttribute("y", movedDown(numberOf(text, "y") - above, above + below, node) + above);
    return true;
  }

  function placeIcon(node, { drawn, piece }) {
    const [x, y, width, height] = boxOf(drawn);
    const isInMiddle = isCentred(x, width, node.drawn[0], node.drawn[2]);
    piece.setAttribute("x", isInMiddle ? node.box[0] + (node.box[2] - width) / 2 : node.box[0] + x - node.drawn[0]);
    piece.setAttribute("y", movedDown(y, height, node));
  }

  function showZoomed(node) {
    if (!node.zoomed) node.zoomed = makeZoomed(node);
    const made = node.zoomed;
    const pieces = [made.background];
    setBox(made.background, node.box);
    if (made.grid) {
      const band = node.text ? Math.min(node.box[3], numberOf(node.text, "font-size") + 2) : 0;
      setBox(made.grid, [node.box[0], node.box[1] + band, node.box[2], node.box[3] - band]);
      pieces.push(made.grid);
    }
    if (made.text && placeText(node, made)) pieces.push(made.text);
    for (const icon of made.icons) {
      placeIcon(node, icon);
      pieces.push(icon.piece);
    }
    node.group.replaceChildren(...pieces);
  }

  /** The style sheet hides the groups that are not of the class, which is quicker than telling each. */
  let zoomed = []; // the nodes whose groups are

  function showPieces(some) {
    const isKept = new Set(some);
    for (const node of zoomed) {
      if (isKept.has(node)) continue;
      node.box = node.drawn;
      node.group.replaceChildren(...node.pieces);
      node.group.classList.remove("zoomed");
    }
    for (const node of some) {
      showZoomed(node);
      node.group.classList.add("zoomed");
    }
    zoomed = some;
    svg.classList.toggle("zoomed", root !== NONE);
  }

  function showAll() {
    fitHeight(HEIGHT);
    showPieces([]);
    if (backdrop) setBox(backdrop.piece, backdrop.box);
  }

  function showSubtree() {
    placeSubtree();
    showPieces(order.filter(isShown));
  }

  /** Squares for nodes whose content is hidden, as the picture has them. */
  function makeGrids() {
    const defs = element("defs");
    for (const [name, color] of [["dark", "#000000"], ["light", "#ffffff"]]) {
      const pattern = element("pattern", { id: `${name}-grid`, width: 8, height: 8, patternUnits: "userSpaceOnUse" });
      pattern.append(element("rect", { width: 5, height: 5, fill: color }));
      defs.append(pattern);
    }
    svg.append(defs);
  }

  // ---- zoom: changing the root

  /** The picture grows out of the place where it was, or shrinks back to it. */
  function animate(from, to) {
    if (matchMedia("(prefers-reduced-motion: reduce)").matches || !svg.animate) return;
    const scale = svg.clientWidth / WIDTH;
    const [x, y] = [from[2] / Math.max(to[2], 1), from[3] / Math.max(to[3], 1)];
    const start = `translate(${(from[0] - to[0] * x) * scale}px, ${(from[1] - to[1] * y) * scale}px) scale(${x}, ${y})`;
    svg.animate([{ transform: start, opacity: 0.6 }, { transform: "none", opacity: 1 }], { duration: 220, easing: "ease-out" });
  }

  /** A root that shows everything is none. */
  const normalised = (index) => (tops.length === 1 && tops[0].index === index ? NONE : index);

  function setRoot(index) {
    const previous = root;
    root = index;
    if (root === NONE) showAll();
    else showSubtree();
    const common = root === NONE ? previous : root;
    const after = nodes[common].box;
    const before = root === NONE || previous !== NONE ? [0, 0, WIDTH, shownHeight] : nodes[common].drawn;
    animate(before, after);
    showCrumbs();
    if (!selected || !isShown(selected)) select(root === NONE ? tops[0] : nodes[root]);
    hideTooltip();
    mark();
    showHits();
    const count = order.filter(isShown).length;
    announce(root === NONE ? "Whole picture" : `Zoomed to ${nameOf(nodes[root])}, ${grouped(count)} nodes`);
  }

  function zoomTo(index) {
    const target = normalised(index);
    if (target === root) return;
    earlierRoots.push(root);
    setRoot(target);
  }

  /** A node with nothing below it in this picture shows what it is in. */
  function zoomInto(node) {
    const hasChildren = node.children.length > 0;
    if (!hasChildren && !isInTree(node.parent)) return;
    const before = root;
    if (hasChildren || isShown(nodes[node.parent])) zoomTo(hasChildren ? node.index : node.parent);
    if (root === before) announce(`${nameOf(node)} cannot be enlarged further`);
  }

  function zoomBack() {
    if (earlierRoots.length === 0) return false;
    setRoot(earlierRoots.pop());
    return true;
  }

  // ---- the path of the zoom

  function crumb(node, isLast) {
    const item = html("li");
    const label = node ? nameOf(node) : data.title;
    const part = html(isLast ? "span" : "button", "", label);
    part.dir = "auto";
    part.title = label;
    if (isLast) part.setAttribute("aria-current", "location");
    else part.type = "button";
    if (!isLast) part.addEventListener("click", () => zoomTo(node ? node.index : NONE));
    item.append(part);
    return item;
  }

  function showCrumbs() {
    const path = root === NONE ? [] : [...pathOf(nodes[root]).filter((node) => node.group), nodes[root]];
    if (tops.length === 1 && path[0] === tops[0]) path.shift();
    const MOST = 8;
    const shown = path.length > MOST ? path.slice(-MOST) : path;
    const items = [crumb(null, path.length === 0)];
    if (shown.length < path.length) items.push(html("li", "", "\u2026"));
    for (const node of shown) items.push(crumb(node, node === path[path.length - 1]));
    byId("crumbs").replaceChildren(...items);
    byId("back").disabled = earlierRoots.length === 0;
    byId("reset").disabled = root === NONE;
    byId("back").parentNode.classList.toggle("zoomed", root !== NONE);
  }

  // ---- marks over the picture

  const marks = element("g", { id: "marks", "aria-hidden": "true" });
  const markOf = {};
  let selected = null; // where the keyboard is
  let isSelectionShown = false; // once the reader or the picture has selected something
  let hovered = null;

  function makeMarks() {
    for (const name of ["veil", "hits", "hover", "under", "selected"]) {
      markOf[name] = element(name === "veil" || name === "hits" ? "path" : "rect", { class: name, "fill-rule": "evenodd" });
      marks.append(markOf[name]);
    }
    svg.append(marks);
  }

  function setMark(name, node, inset) {
    markOf[name].setAttribute("display", node && isShown(node) ? "inline" : "none");
    if (!node) return;
    const [x, y, width, height] = node.box;
    setBox(markOf[name], [x + inset, y + inset, width - 2 * inset, height - 2 * inset]);
  }

  function mark() {
    setMark("hover", hovered, 0.5);
    setMark("under", isSelectionShown ? selected : null, 1);
    setMark("selected", isSelectionShown ? selected : null, 1);
  }

  function select(node) {
    if (selected) {
      selected.group.setAttribute("tabindex", "-1");
      selected.group.setAttribute("aria-selected", "false");
    }
    selected = node;
    node.group.setAttribute("tabindex", "0");
    node.group.setAttribute("aria-selected", "true");
    mark();
  }

  // ---- tooltip

  const tooltip = byId("tooltip");

  /** Labels from the root down; of a long path the first one and the last ones. */
  function pathLine(path) {
    const MOST = 12;
    const line = html("p", "path");
    for (const [i, above] of path.entries()) {
      if (i > 0 && i < path.length - MOST) continue;
      if (i > 0) line.append(" \u203a ");
      if (i > 0 && i === path.length - MOST) line.append("\u2026 \u203a ");
      line.append(html("bdi", "", nameOf(above)));
    }
    return line;
  }

  function fillTooltip(node) {
    const lines = [];
    const label = html("p", "label", nameOf(node));
    label.dir = "auto";
    lines.push(label);
    const path = pathOf(node);
    if (path.length > 0) lines.push(pathLine(path));
    lines.push(html("p", "value", valueOf(node)));
    const shares = [];
    const ofTotal = share(Number(node.value), Number(data.total));
    if (ofTotal) shares.push(`${ofTotal} of total`);
    if (path.length > 0) {
      const ofParent = share(Number(node.value), Number(nodes[node.parent].value));
      if (ofParent) shares.push(`${ofParent} of ${nameOf(nodes[node.parent])}`);
    }
    if (shares.length > 0) lines.push(html("p", "share", shares.join(" \u00b7 ")));
    if (node.below > 0)
      lines.push(html("p", "more", `${grouped(node.below)} ${node.below === 1 ? "node" : "nodes"} below not in this picture`));
    tooltip.replaceChildren(...lines);
  }

  function showTooltip(node, x, y) {
    fillTooltip(node);
    tooltip.hidden = false;
    const { width, height } = tooltip.getBoundingClientRect();
    const GAP = 14;
    const left = x + GAP + width > innerWidth - 8 ? Math.max(8, x - GAP - width) : x + GAP;
    const top = y + GAP + height > innerHeight - 8 ? Math.max(8, y - GAP - height) : y + GAP;
    tooltip.style.transform = `translate(${Math.round(left)}px, ${Math.round(top)}px)`;
  }

  function hideTooltip() {
    tooltip.hidden = true;
  }

  /** Where a node stands in the window. */
  function windowBox(node) {
    const outer = svg.getBoundingClientRect();
    const scale = outer.width / WIDTH;
    return [outer.left + node.box[0] * scale, outer.top + node.box[1] * scale, node.box[2] * scale, node.box[3] * scale];
  }

  function showTooltipAt(node) {
    const [left, top, width, height] = windowBox(node);
    showTooltip(node, left + Math.min(width / 2, 40), top + Math.min(height, 24));
  }

  // ---- search

  const query = byId("query");
  let keys = null; // what is searched, made at the first search
  let hits = [];
  let hit = NONE; // position in `hits`

  const folded = (text) => text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();

  function search() {
    if (!keys) keys = order.map((node) => folded(node.label));
    const wanted = folded(query.value.trim());
    hits = wanted ? order.filter((node, i) => keys[i].includes(wanted)) : [];
    hit = NONE;
    showHits();
  }

  function countText() {
    if (!query.value.trim()) return "";
    if (hits.length === 0) return "no hits";
    if (hit !== NONE) return `hit ${grouped(hit + 1)} of ${grouped(hits.length)}`;
    const inView = hits.filter(isShown).length;
    const text = hits.length === 1 ? "1 hit" : `${grouped(hits.length)} hits`;
    return inView < hits.length ? `${text}, ${grouped(inView)} in view` : text;
  }

  const outline = ([x, y, width, height]) => `M${x} ${y}h${width}v${height}h${-width}z`;

  /** What holds no hit is veiled; a hit inside a hit is outlined only, or the veil would come back. */
  function showHits() {
    byId("hits").textContent = countText();
    byId("earlier").disabled = byId("later").disabled = hits.length === 0;
    const shown = hits.filter(isShown);
    let behind = 0;
    const outermost = [];
    for (const node of [...shown].sort((a, b) => a.index - b.index)) {
      if (node.index < behind) continue;
      behind = node.end;
      outermost.push(node);
    }
    const isSearching = query.value.trim() !== "";
    markOf.veil.setAttribute("d", isSearching ? outline([0, 0, WIDTH, shownHeight]) + outermost.map(({ box }) => outline(box)).join("") : "");
    markOf.hits.setAttribute("d", shown.map(({ box }) => outline(box)).join(""));
  }

  function stepHit(step) {
    if (hits.length === 0) return;
    hit = hit === NONE ? (step > 0 ? 0 : hits.length - 1) : (hit + step + hits.length) % hits.length;
    const node = hits[hit];
    if (!isShown(node)) zoomTo(NONE);
    isSelectionShown = true;
    select(node);
    showHits();
    node.group.scrollIntoView({ block: "nearest" });
    showTooltipAt(node);
    announce(spokenName(node));
  }

  function onSearchKey(event) {
    if (event.key === "Enter") {
      stepHit(event.shiftKey ? -1 : 1);
    } else if (event.key === "Escape") {
      hideTooltip();
      if (query.value === "") focusOn(selected);
      query.value = "";
      search();
    } else if (event.key === "ArrowDown") {
      if (hit === NONE) stepHit(1);
      focusOn(selected);
    } else {
      return;
    }
    event.preventDefault();
  }

  // ---- keyboard

  function focusOn(node) {
    isSelectionShown = true;
    select(node);
    node.group.focus({ preventScroll: true });
    node.group.scrollIntoView({ block: "nearest", inline: "nearest" });
  }

  const inside = (node) => (node.index !== root && isInTree(node.parent) ? nodes[node.parent] : null);

  /** The next sibling or, behind the last one, that of what the node is in. */
  function following(node) {
    for (let at = node; at && at.index !== root; at = inside(at)) {
      const next = siblingsOf(at)[at.place];
      if (next) return next;
    }
    return null;
  }

  const preceding = (node) => (node.index === root ? null : siblingsOf(node)[node.place - 2] || inside(node));
  const firstShown = () => (root === NONE ? tops[0] : nodes[root]);

  function lastShown() {
    let node = root === NONE ? tops[tops.length - 1] : nodes[root];
    while (node.children.length > 0) node = node.children[node.children.length - 1];
    return node;
  }

  const moves = {
    ArrowDown: following,
    ArrowUp: preceding,
    ArrowRight: (node) => node.children[0],
    ArrowLeft: inside,
    Home: firstShown,
    End: lastShown,
  };

  function onTreeKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey || !selected) return;
    if (moves[event.key]) {
      const next = moves[event.key](selected);
      if (next) focusOn(next);
    } else if (event.key === "Enter" || event.key === " ") {
      zoomInto(selected);
      focusOn(selected);
    } else if (event.key === "Backspace" || event.key === "Escape") {
      hideTooltip();
      if (zoomBack()) focusOn(selected);
    } else {
      return;
    }
    event.preventDefault();
  }

  function onPageKey(event) {
    const isTyping = event.target instanceof HTMLInputElement;
    if (event.key === "/" && !isTyping && !event.ctrlKey && !event.altKey && !event.metaKey) {
      query.focus();
      query.select();
      event.preventDefault();
    } else if (event.key === "Escape") {
      hideTooltip();
    }
  }

  // ---- pointer: one listener each for all nodes

  function nodeAt(target) {
    const group = target instanceof Element ? target.closest('[role="treeitem"]') : null;
    return group ? ofGroup.get(group) : null;
  }

  function onMove(event) {
    const node = nodeAt(event.target);
    if (node !== hovered) {
      hovered = node;
      mark();
    }
    if (node) showTooltip(node, event.clientX, event.clientY);
    else hideTooltip();
  }

  function onLeave() {
    hovered = null;
    mark();
    hideTooltip();
  }

  function listen() {
    svg.addEventListener("pointermove", onMove);
    svg.addEventListener("pointerleave", onLeave);
    svg.addEventListener("click", (event) => {
      const node = nodeAt(event.target);
      if (node) focusOn(node);
    });
    svg.addEventListener("dblclick", (event) => {
      const node = nodeAt(event.target);
      if (node) zoomInto(node);
    });
    svg.addEventListener("keydown", onTreeKey);
    svg.addEventListener("focusin", (event) => {
      const node = nodeAt(event.target);
      if (!node) return;
      isSelectionShown = true;
      select(node);
      if (!hovered) showTooltipAt(node);
    });
    svg.addEventListener("focusout", hideTooltip);
    document.addEventListener("keydown", onPageKey);
    addEventListener("scroll", hideTooltip, { passive: true });
    query.addEventListener("input", search);
    query.addEventListener("keydown", onSearchKey);
    byId("search").addEventListener("submit", (event) => event.preventDefault());
    byId("earlier").addEventListener("click", () => stepHit(-1));
    byId("later").addEventListener("click", () => stepHit(1));
    byId("back").addEventListener("click", zoomBack);
    byId("reset").addEventListener("click", () => zoomTo(NONE));
    full.addEventListener("click", toggleFullSize);
    picture.addEventListener("scroll", hideTooltip, { passive: true });
    addEventListener("resize", offerFullSize);
  }

  // ---- pictures that are larger than the window

  const full = byId("full");

  function offerFullSize() {
    const isFull = picture.classList.contains("full");
    full.hidden = !isFull && picture.clientWidth >= WIDTH / UNIT - 1;
  }

  function toggleFullSize() {
    const isFull = picture.classList.toggle("full");
    full.setAttribute("aria-pressed", isFull);
    if (isFull && selected) selected.group.scrollIntoView({ block: "nearest", inline: "nearest" });
    offerFullSize();
  }

  // ---- start

  function start() {
    readNodes();
    if (order.length === 0) return;
    describe();
    readLines();
    findBackdrop();
    bringIntoOrder();
    makeGrids();
    makeMarks();
    const text = svg.querySelector("text");
    if (text) fontFamily = getComputedStyle(text).fontFamily;
    for (const [index, color] of data.active) if (nodes[index].text) nodes[index].text.setAttribute("fill", color);
    listen();
    isSelectionShown = data.selected !== NONE;
    select(isSelectionShown ? nodes[data.selected] : tops[0]);
    showCrumbs();
    for (const part of document.querySelectorAll(".script")) part.hidden = false;
    offerFullSize();
  }

  start();
})();
