// The style of the pages of explanations.

#ifndef QEL_TOOL_EXPLAIN_HTML_STYLE_H_
#define QEL_TOOL_EXPLAIN_HTML_STYLE_H_

#include <string_view>

namespace qel::tool {

// Light and dark, for screens from 320 pixels on and for paper. Each text has a contrast of at
// least 4.5 to what is behind it (WCAG 2, level AA).
inline constexpr std::string_view kPageStyle = R"(
:root{--back:#fff;--text:#1b1f24;--soft:#57606a;--line:#d0d7de;--tint:#f3f6f9;--mark:#0b57d0;
--good:#0b5a2a;--good-back:#dcf3e3;--low:#6b4700;--low-back:#fff0c2;--bad:#96150c;--bad-back:#ffe3e0}
@media (prefers-color-scheme:dark){:root{--back:#14171a;--text:#e6e8eb;--soft:#a4adb8;--line:#3a4148;
--tint:#1e2328;--mark:#8ab4f8;--good:#9be7b4;--good-back:#123d22;--low:#f5d67a;--low-back:#43350a;
--bad:#ffb4ab;--bad-back:#4d1714}}
*{box-sizing:border-box}
html{color-scheme:light dark}
body{margin:0;background:var(--back);color:var(--text);font:16px/1.5 system-ui,sans-serif}
main{max-width:784px;margin:0 auto;padding:16px;overflow-wrap:anywhere}
h1{font-size:1.4rem;line-height:1.25;margin:.5rem 0}
h2{font-size:1rem;margin:1.5rem 0 .25rem}
p{margin:.25rem 0}
bdi,.code,code,th[scope]{font-family:ui-monospace,monospace;font-size:.92em}
h1 bdi{font-family:inherit;font-size:1em}
i{color:var(--soft)}
.badge{display:inline-block;padding:0 .6em;border-radius:1em;font-size:.85rem;line-height:1.6rem;
border:1px solid currentcolor}
.good{color:var(--good);background:var(--good-back)}
.low{color:var(--low);background:var(--low-back)}
.bad{color:var(--bad);background:var(--bad-back)}
.outcome{font-size:1.1rem}
.head{margin:.75rem 0 0}
.head div{display:flex;flex-wrap:wrap;gap:0 .75rem}
dt{color:var(--soft);flex:0 0 8.5rem}
dd{margin:0;flex:1 1 12rem;min-width:0}
ul,ol{margin:.25rem 0;padding-left:1.25rem}
.decisions{list-style:none;padding:0}
.decisions>li{margin:.5rem 0}
.decisions ul{color:var(--soft)}
.notes li{margin:.25rem 0}
table{border-collapse:collapse;width:100%;font-size:.92rem}
th,td{text-align:left;vertical-align:top;padding:.25rem .75rem .25rem 0;border-top:1px solid var(--line)}
thead th{border:0;color:var(--soft);font-weight:400}
.event th[scope]{font-weight:400}
.one,.event th[scope]{white-space:nowrap}
.event td:nth-child(2){max-width:16rem}
.entries td:first-child{font-variant-numeric:tabular-nums}
.reported td{background:var(--tint);font-weight:600}
.reported td:last-child{font-weight:400}
.odd td:last-child{color:var(--bad)}
.shapes{position:absolute}
.timeline{display:block;margin:.5rem 0 0}
.timeline text{font:12px system-ui,sans-serif;fill:var(--soft);paint-order:stroke;stroke:var(--back);stroke-width:4px}
.timeline .lane{font-family:ui-monospace,monospace;unicode-bidi:isolate}
.timeline .own{fill:var(--text);font-weight:600}
.from{text-anchor:start}.mid{text-anchor:middle}.to{text-anchor:end}
line.lane{stroke:var(--line)}
line.now{stroke:var(--mark);stroke-dasharray:4 3}
.arc{fill:none;stroke:var(--mark);stroke-width:1.5;vector-effect:non-scaling-stroke}
.full{fill:var(--mark);stroke:var(--mark);stroke-width:2}
.hollow{fill:var(--back);stroke:var(--mark);stroke-width:2}
.unread{fill:var(--back);stroke:var(--bad);stroke-width:1.5}
.mark{font:bold 12px system-ui,sans-serif;fill:var(--bad);stroke:none}
.ring{fill:none;stroke:var(--text);stroke-width:2}
.ring.bad{stroke:var(--bad);stroke-dasharray:3 2}
.caption{font-size:.85rem;color:var(--soft)}
.legend{list-style:none;padding:0;display:flex;flex-wrap:wrap;gap:0 1rem;margin:.25rem 0 1rem;font-size:.85rem;color:var(--soft)}
.legend li{display:flex;align-items:center;gap:.25rem}
fieldset{border:1px solid var(--line);border-radius:8px;display:flex;flex-wrap:wrap;gap:.25rem 1rem;margin:1rem 0}
label{display:flex;align-items:center;gap:.35rem}
.list{border-top:1px solid var(--line)}
.row{border-bottom:1px solid var(--line);padding:.5rem 0;content-visibility:auto;contain-intrinsic-size:auto 68px}
summary{cursor:pointer}
summary::marker{color:var(--soft)}
.name bdi{font-family:inherit;font-size:1em}
.result,.advice{display:block;margin-top:.15rem}
.advice{color:var(--soft);font-size:.92rem}
:focus-visible{outline:2px solid var(--mark);outline-offset:2px}
@media (max-width:560px){.event td:nth-child(2){max-width:none}table,tbody,tr,td,tbody th{display:block}thead{display:none}
tr{border-top:1px solid var(--line);padding:.35rem 0}th,td{border:0;padding:0}}
@media print{.row{content-visibility:visible}fieldset{display:none}main{max-width:none}
h2,thead{break-after:avoid}tr,.timeline{break-inside:avoid}}
)";

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_HTML_STYLE_H_
