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
  var jobs = Array.from(body.rows).map(function (row) {
    return { row: row, text: row.textContent.toLowerCase(), state: row.cells[1].textContent };
  });
  var ordered = jobs;
  var heads = Array.from(table.tHead.rows[0].cells);
  var order = new Intl.Collator("en", { numeric: true });
  /* Laying out thousands of rows takes a browser seconds, each time that they are sorted. */
  var first = 200;
  var most = first;
  var addressed = null;

  function make(parent, name, text) {
    var element = document.createElement(name);
    element.textContent = text;
    parent.appendChild(element);
    return element;
  }

  var controls = document.createElement("p");
  controls.className = "controls";
  var state = make(make(controls, "label", "State "), "select", "");
  var search = make(make(controls, "label", "Search "), "input", "");
  var count = make(controls, "output", "");
  var all = make(controls, "button", "Show all");
  state.id = "state";
  search.id = "search";
  search.type = "search";
  count.id = "count";
  all.id = "all";
  all.type = "button";
  make(state, "option", "all").value = "";
  Array.from(new Set(jobs.map(function (job) { return job.state; }))).sort().forEach(function (name) {
    make(state, "option", name);
  });
  table.parentNode.parentNode.insertBefore(controls, table.parentNode);

  function isWanted(job, text) {
    return state.value === "" || job.state === state.value ? job.text.includes(text) : false;
  }
  function show() {
    var text = search.value.toLowerCase();
    var found = 0;
    ordered.forEach(function (job) {
      var wanted = isWanted(job, text);
      found += wanted ? 1 : 0;
      var isHidden = wanted ? found > most : true;
      isHidden = job.row === addressed ? false : isHidden;
      if (job.row.hidden !== isHidden) { job.row.hidden = isHidden; }
    });
    count.textContent = found + " of " + jobs.length + " jobs" + (found > most ? ", the first " + most + " are shown" : "");
    all.hidden = most >= found;
  }
  function filter() {
    most = first;
    addressed = null;
    show();
  }
  function showAll() {
    most = jobs.length;
    show();
  }
  function showAddressed() {
    var row = document.getElementById(location.hash.slice(1));
    if (row !== null ? row.hidden : false) {
      state.value = "";
      search.value = "";
      addressed = row;
      show();
      row.scrollIntoView();
    }
  }

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
    jobs.forEach(function (job) { job.key = keyOf(job.row.cells[column]); });
    ordered = jobs.slice().sort(function (a, b) {
      if (a.key === null || b.key === null) { return Number(a.key === null) - Number(b.key === null); }
      return turn * compare(a.key, b.key);
    });
    most = first;
    show();
    /* Rows of a table that is shown are moved one by one, which takes ten times as long. */
    table.removeChild(body);
    ordered.forEach(function (job) { body.appendChild(job.row); });
    table.appendChild(body);
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
  all.addEventListener("click", showAll);
  window.addEventListener("beforeprint", showAll);
  window.addEventListener("hashchange", showAddressed);
  show();
  showAddressed();
}());
)",
                                "sha256-NJBhSX2vzSXITNTKimEC2KfVzleE/qPn38e3fgBcZQs="};

} // namespace Zelnor::Media
