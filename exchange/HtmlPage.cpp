#include "exchange/HtmlPage.h"

namespace tavlin::html_page {

// tests/exchange/html/page_test.py says what the hashes are to be after a change.

const std::string_view kStyle = R"CSS(
:root{color-scheme:light dark;--text:#1d1f21;--soft:#5c6166;--line:#d9dcdf;--back:#fdfdfc;--field:#fff;--accent:#0b62a3;--done:#257a3e}
@media (prefers-color-scheme:dark){:root{--text:#e6e6e3;--soft:#a3a8ad;--line:#3b4045;--back:#17191b;--field:#202326;--accent:#7cbcf2;--done:#7fcf95}}
*{box-sizing:border-box}
html{background:var(--back);color:var(--text);font:1rem/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans",sans-serif;text-size-adjust:100%}
body{max-width:48rem;margin:0 auto;padding:2rem 1.25rem 4rem;overflow-wrap:anywhere}
h1{font-size:1.75rem;line-height:1.25;margin:0 0 .75rem}
dl{display:grid;grid-template-columns:max-content 1fr;gap:.125rem 1rem;margin:0 0 1.25rem;color:var(--soft);font-size:.9rem}
dt{font-weight:600}
dd{margin:0;white-space:pre-wrap}
dd span+span::before{content:"\b7";margin:0 .5em}
form{position:sticky;top:0;z-index:1;display:flex;flex-wrap:wrap;align-items:center;gap:.5rem .75rem;margin:0 -.5rem 1rem;padding:.5rem;background:var(--back);border-bottom:1px solid var(--line)}
form[hidden],li[hidden]{display:none}
label{font-size:.9rem;color:var(--soft)}
input{flex:1 1 12rem;min-width:0;font:inherit;color:inherit;background:var(--field);border:1px solid var(--soft);border-radius:.375rem;padding:.25rem .625rem}
output{font-size:.9rem;color:var(--soft);min-width:8ch}
ul{list-style:none;margin:0;padding:0}
ul ul{margin-left:.6rem;padding-left:1rem;border-left:1px solid var(--line)}
li{margin:.0625rem 0}
.item,summary{display:flex;align-items:baseline;position:relative;padding:.125rem .375rem .125rem 1.5rem;border-radius:.25rem}
summary{cursor:pointer}
summary:hover{background:color-mix(in srgb,var(--accent) 10%,transparent)}
summary::-webkit-details-marker{display:none}
summary::before{content:"";position:absolute;left:.4rem;top:.55em;border:.32em solid transparent;border-left:.45em solid var(--soft);border-right:0}
details[open]>summary::before{transform:rotate(90deg)}
.item::before{content:"";position:absolute;left:.45rem;top:.72em;width:.35em;height:.35em;border-radius:50%;background:var(--line)}
:focus-visible{outline:2px solid var(--accent);outline-offset:1px}
.title,.note{white-space:pre-wrap}
.title{flex:0 1 auto;min-width:0}
.untitled{color:var(--soft);font-style:italic}
.note{color:var(--soft);font-size:.9rem;padding:0 .375rem .25rem 1.5rem}
.marked>.note,.marked>details>.note{padding-left:3.25rem}
.number{flex:none;color:var(--soft);font-variant-numeric:tabular-nums;margin-right:.5em}
.check{flex:none;align-self:flex-start;position:relative;width:1em;height:1em;margin:.25em .6em 0 .1em;border:.125em solid var(--soft);border-radius:.2em}
.check.yes,.check.all{border-color:var(--done)}
.check.yes{background:var(--done)}
.check.yes::before,.check.all::before{content:"";position:absolute;left:.22em;top:0;width:.25em;height:.5em;border:solid var(--back);border-width:0 .14em .14em 0;transform:rotate(42deg)}
.check.all::before{border-color:var(--done)}
.check.some::before{content:"";position:absolute;left:.12em;right:.12em;top:.31em;height:.14em;background:var(--soft)}
.check.none{border-color:transparent}
a{color:var(--accent);text-underline-offset:.15em}
code{font:.92em ui-monospace,"SF Mono",Menlo,Consolas,"DejaVu Sans Mono",monospace}
.hit{background:color-mix(in srgb,var(--accent) 16%,transparent)}
.empty{color:var(--soft)}
@media (max-width:30rem){body{padding:1.25rem .75rem 3rem}h1{font-size:1.4rem}ul ul{margin-left:.25rem;padding-left:.75rem}dl{grid-template-columns:1fr}dd{margin-bottom:.375rem}}
@media print{:root{--text:#000;--soft:#444;--line:#bbb;--back:#fff;--accent:#000;--done:#000;color-scheme:light}html{font-size:10.5pt}body{max-width:none;padding:0}form{display:none}.item,summary{break-inside:avoid}h1{break-after:avoid}.check{print-color-adjust:exact}a[href^=http]::after{content:" (" attr(href) ")";font-size:.85em;color:var(--soft)}}
@media (forced-colors:active){.check{border-color:CanvasText}.check.yes::before,.check.all::before{border-color:CanvasText}}
)CSS";
const std::string_view kStyleHash = "9hQigUv8jrymhODm2BJwmBjCkitiWEHAGqHeHbhLToM=";

const std::string_view kScript = R"JS(
"use strict";
(() => {
  const form = document.querySelector("form");
  const box = form.querySelector("input");
  const count = form.querySelector("output");
  const items = [...document.querySelectorAll("main li")];
  const opened = new Map();
  let texts = null;
  let waiting = 0;
  const ownText = (item) => {
    let text = "";
    for (const part of item.querySelectorAll(":scope>.item,:scope>.note,:scope>details>summary,:scope>details>.note")) {
      text += part.textContent + "\n";
    }
    return text.normalize("NFC").toLowerCase();
  };
  const show = () => {
    waiting = 0;
    const wanted = box.value.normalize("NFC").toLowerCase().trim();
    texts ??= items.map(ownText);
    let matches = 0;
    const needed = new Set();
    for (let i = items.length - 1; i >= 0; --i) {
      const item = items[i];
      const isMatch = wanted !== "" && texts[i].includes(wanted);
      const leads = needed.has(item);
      matches += isMatch ? 1 : 0;
      item.hidden = wanted !== "" && !isMatch && !leads;
      item.firstElementChild.classList.toggle("hit", isMatch && !leads && item.firstElementChild.localName !== "details");
      if (item.firstElementChild.localName === "details") {
        const details = item.firstElementChild;
        details.firstElementChild.classList.toggle("hit", isMatch);
        if (!opened.has(details)) opened.set(details, details.open);
        details.open = leads || opened.get(details);
      }
      if (isMatch || leads) {
        const above = item.parentElement.closest("li");
        if (above) needed.add(above);
      }
    }
    if (wanted === "") opened.clear();
    count.textContent = wanted === "" ? "" : matches + " of " + items.length;
  };
  box.addEventListener("input", () => {
    if (!waiting) waiting = requestAnimationFrame(show);
  });
  box.addEventListener("keydown", (event) => {
    if (event.key === "Escape" && box.value !== "") {
      box.value = "";
      event.preventDefault();
      show();
    }
  });
  form.addEventListener("submit", (event) => event.preventDefault());
  form.hidden = false;
  if (box.value !== "") show();
})();
)JS";
const std::string_view kScriptHash = "v/XMr/IKkugsvdI1Vw+Zc0cI6iuENV5o2LjJ0gdSILw=";

}  // namespace tavlin::html_page
