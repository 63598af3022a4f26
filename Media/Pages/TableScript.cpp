#include "Media/Pages/PageFrame.h"

// After a change of this text, the test of the frame says which hash belongs to it. It may hold neither "<"
// nor "&", which XML and HTML read in different ways there.

namespace Zelnor::Media
{

const PageAsset kTableScript = {R"(
(function () {
  "use strict";
  var table = document.querySelector("table.jobs");
  if (table === null) { return; }
  var body = table.tBodies[0];
  var rows = Array.from(body.rows);
  var heads = Array.from(table.tHead.rows[0].cells);
  var texts = rows.map(function (row) { return row.textContent.toLowerCase(); });
  var order = new Intl.Collator("en", { numeric: true });

  function make(parent, name, text) {
    var element = document.createElement(name);
    element.textContent = text;
    parent.appendChild(element);
    return element;
  }
  function stateOf(row) { return row.cells[1].textContent; }
  function keyOf(cell) {
    if (cell.dataset.key === undefined) { return cell.textContent; }
    return cell.dataset.key === "" ? null : Number(cell.dataset.key);
  }
  function compare(a, b) { return typeof a === "number" ? a - b : order.compare(a, b); }

  function sortBy(column) {
    var head = heads[column];
    var turn = head.getAttribute("aria-sort") === "ascending" ? -1 : 1;
    heads.forEach(function (other) { other.removeAttribute("aria-sort"); });
    head.setAttribute("aria-sort", turn === 1 ? "ascending" : "descending");
    var keyed = rows.map(function (row) { return { row: row, key: keyOf(row.cells[column]) }; });
    keyed.sort(function (a, b) {
      if (a.key === null || b.key === null) { return Number(a.key === null) - Number(b.key === null); }
      return turn * compare(a.key, b.key);
    });
    var sorted = document.createDocumentFragment();
    keyed.forEach(function (one) { sorted.appendChild(one.row); });
    body.appendChild(sorted);
  }

  var controls = document.createElement("p");
  controls.className = "controls";
  var state = make(make(controls, "label", "State "), "select", "");
  var search = make(make(controls, "label", "Search "), "input", "");
  var count = make(controls, "output", "");
  state.id = "state";
  search.id = "search";
  search.type = "search";
  count.id = "count";
  make(state, "option", "all").value = "";
  Array.from(new Set(rows.map(stateOf))).sort().forEach(function (name) { make(state, "option", name); });
  table.parentNode.parentNode.insertBefore(controls, table.parentNode);

  function filter() {
    var wanted = search.value.toLowerCase();
    var shown = 0;
    rows.forEach(function (row, i) {
      var isOther = state.value === "" ? false : stateOf(row) !== state.value;
      row.hidden = isOther || !texts[i].includes(wanted);
      shown += row.hidden ? 0 : 1;
    });
    count.textContent = shown + " of " + rows.length + " jobs";
  }
  function showAddressed() {
    var row = document.getElementById(location.hash.slice(1));
    if (row !== null ? row.hidden : false) {
      state.value = "";
      search.value = "";
      filter();
      row.scrollIntoView();
    }
  }

  heads.forEach(function (head, column) {
    var name = head.textContent;
    head.textContent = "";
    var button = make(head, "button", name);
    button.type = "button";
    button.addEventListener("click", function () { sortBy(column); });
  });
  state.addEventListener("change", filter);
  search.addEventListener("input", filter);
  window.addEventListener("hashchange", showAddressed);
  filter();
}());
)",
                                "sha256-JYqY19UL4d1Wcvbpjragh6vtybfe40r2yTxPQtZTupI="};

} // namespace Zelnor::Media
