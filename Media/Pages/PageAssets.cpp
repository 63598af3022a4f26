#include "Media/Pages/PageFrame.h"

// After a change of one of these texts, the test of the frame says which hash belongs to it. Neither may hold
// "<" or "&", which XML and HTML read in different ways there.

namespace Zelnor::Media
{

const PageAsset kPageStyle = {R"(
:root { color-scheme: light dark; --paper: #fff; --ink: #1c2226; --faint: #5b666d; --line: #c6cfd4; --box: #f2f5f7;
  --link: #0b5cad; --bad: #b3261e; --bad-box: #fdeceb; --new: #e7f3ea; --mark: #ffe9a8; }
@media (prefers-color-scheme: dark) {
  :root { --paper: #16191b; --ink: #e6eaec; --faint: #9fabb2; --line: #3d474d; --box: #22282c;
    --link: #7cb7f5; --bad: #ff8a80; --bad-box: #3a1f1e; --new: #1d3324; --mark: #5a4a14; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 110rem; padding: 1rem 1.5rem 3rem; background: var(--paper); color: var(--ink);
  font: 15px/1.45 system-ui, sans-serif; overflow-wrap: anywhere; }
h1 { font-size: 1.5rem; margin: 0 0 .25rem; }
h2 { font-size: 1.15rem; margin: 1.75rem 0 .5rem; }
h3 { font-size: 1rem; margin: 0 0 .4rem; }
a { color: var(--link); }
a:focus-visible, summary:focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
code, pre, .key, .value, td, tbody th, svg text { font-family: ui-monospace, "DejaVu Sans Mono", monospace; }
.verdict { margin: 0; color: var(--faint); }
.bad { color: var(--bad); font-weight: 600; }
.faults li { color: var(--bad); }
.faults li a { color: inherit; }
.beside { display: grid; grid-template-columns: minmax(0, 1fr) minmax(0, 26rem); gap: 1.5rem; align-items: start; }
@media (max-width: 70rem) { .beside { grid-template-columns: minmax(0, 1fr); } }
figure { margin: 0; overflow: auto; border: 1px solid var(--line); border-radius: 8px; }
svg { display: block; font-size: 11.6px; }
svg text { fill: var(--ink); }
svg .name { font-weight: 600; }
svg .number, svg .detail { fill: var(--faint); }
svg rect { fill: var(--box); stroke: var(--faint); }
svg .link rect { fill: var(--paper); stroke-dasharray: 4 3; }
svg .line { fill: none; stroke: var(--faint); stroke-width: 1.5; }
svg .reach { fill: none; stroke: transparent; stroke-width: 14; }
svg marker path { fill: var(--faint); }
svg a:hover rect, svg a:focus-visible rect { stroke: var(--link); stroke-width: 2; }
svg a:hover .line, svg a:focus-visible .line { stroke: var(--link); }
svg .faulty rect { stroke: var(--bad); fill: var(--bad-box); stroke-width: 2; }
svg circle { fill: var(--bad); }
svg .mark { fill: var(--paper); font-weight: 700; }
svg a[aria-current] rect { stroke: var(--link); stroke-width: 3.5; stroke-dasharray: none; }
svg a[aria-current] .line { stroke: var(--link); stroke-width: 3.5; }
.records { border: 1px solid var(--line); border-radius: 8px; padding: .75rem 1rem; max-height: 85vh; overflow: auto; }
.record { scroll-margin-top: 12rem; padding: .5rem 0 .75rem; border-bottom: 1px solid var(--line); }
.record:target { border-left: 4px solid var(--link); padding-left: .6rem; }
.records:has(.record:target) .record:not(:target) { display: none; }
.neighbours { margin: 0 0 .4rem; color: var(--faint); }
.tree, .tree ul { list-style: none; margin: 0; padding: 0; }
.tree ul { padding-left: 1.1rem; border-left: 1px solid var(--line); }
.tree .key { color: var(--faint); }
.tree .value, p.value { white-space: pre-wrap; }
pre { margin: 0 0 .4rem; padding: .4rem .6rem; background: var(--box); white-space: pre-wrap; }
.level { color: var(--faint); font-size: .85em; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; table-layout: fixed; width: 100%; min-width: 40rem; margin-bottom: 1.5rem; }
caption { text-align: left; font-weight: 600; padding: .3rem 0; }
th, td { text-align: left; vertical-align: top; padding: .2rem .6rem; border-bottom: 1px solid var(--line); }
thead th { width: 34%; }
thead th:first-child { width: 20%; }
thead th:last-child { width: 12%; }
tbody th { font-weight: 400; }
tbody th[colspan] { font-weight: 600; background: var(--box); }
.level1 { padding-left: 1.8rem; } .level2 { padding-left: 3rem; } .level3 { padding-left: 4.2rem; }
.level4 { padding-left: 5.4rem; }
tr.changed td { background: var(--mark); }
tr.set td { background: var(--new); }
tr.same td, tr.kept td, tr.dropped td { color: var(--faint); }
table.summary { min-width: 0; } .summary th { width: 9rem; }
table.jobs { table-layout: auto; } table.jobs th { width: auto; white-space: nowrap; }
.jobs tr:target, section.record:target { background: var(--mark); }
.amount { text-align: right; }
.amount, .jobs td:nth-child(2), .jobs td:nth-child(12) { white-space: nowrap; }
.controls { display: flex; flex-wrap: wrap; gap: .5rem 1.5rem; align-items: baseline; }
.jobs button { border: 0; padding: 0; background: none; color: inherit; font: inherit; cursor: pointer;
  text-decoration: underline dotted; }
th[aria-sort="ascending"] button::after { content: " \25B2"; }
th[aria-sort="descending"] button::after { content: " \25BC"; }
@media print {
  :root { --paper: #fff; --ink: #000; --faint: #444; --line: #bbb; --box: #f4f4f4; --link: #000; --bad: #900;
    --bad-box: #fff; --new: #f0f0f0; --mark: #e4e4e4; }
  body { padding: 0; font-size: 10pt; }
  .beside { display: block; }
  figure, .records { border: 0; padding: 0; overflow: visible; max-height: none; }
  .records:has(.record:target) .record:not(:target) { display: block; }
  svg { max-width: 100%; height: auto; }
  tr, .record { break-inside: avoid; }
  .all, .controls { display: none; }
}
)",
                              "sha256-ZcH2KoKMAypPA8sPEqgYSKupsj4Krivk/gjTqAwbJec="};

const PageAsset kDrawingScript = {R"(
(function () {
  "use strict";
  function show() {
    var address = location.hash;
    document.querySelectorAll("svg a").forEach(function (link) {
      if (link.getAttribute("href") === address) {
        link.setAttribute("aria-current", "true");
      } else {
        link.removeAttribute("aria-current");
      }
    });
    var record = document.getElementById(address.slice(1));
    if (record !== null) {
      record.querySelectorAll("details").forEach(function (details) { details.open = true; });
    }
  }
  window.addEventListener("hashchange", show);
  document.addEventListener("keydown", function (event) {
    if (event.key === "Escape") { location.hash = "records"; }
  });
  show();
}());
)",
                                  "sha256-RJaAjyVd69EXZNVF17L0265T++EgeVFtYi2i3TWDL3A="};

} // namespace Zelnor::Media
