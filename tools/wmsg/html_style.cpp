// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_style.h"

namespace wmsg::cli {

namespace {

constexpr char kColours[] = R"(
:root{color-scheme:light dark;--page:#e9edf4;--card:#fff;--ink:#111827;--quiet:#5b6476;--edge:#d7dde8;
--accent:#2f5fe3;--on-accent:#fff;--warn:#fff4d6;--warn-ink:#6b4700;--bad:#fde3e3;--bad-ink:#8a1c1c;
--bezel:#1b2130;--screen:#fff;--chip:#eef2fb}
@media (prefers-color-scheme:dark){:root{--page:#0d1118;--card:#171d28;--ink:#e8ecf4;--quiet:#98a2b6;
--edge:#2a3344;--accent:#83a5ff;--on-accent:#0b1020;--warn:#3a2f12;--warn-ink:#ffdf91;--bad:#41191c;
--bad-ink:#ffc0c0;--bezel:#05070b;--screen:#1f2735;--chip:#232c3c}}
)";

constexpr char kPage[] = R"(
*{box-sizing:border-box}
body{margin:0;background:var(--page);color:var(--ink);
font:16px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Noto Sans","DejaVu Sans",sans-serif;
overflow-wrap:anywhere}
main{max-width:70rem;margin:0 auto;padding:1rem}
h1{font-size:1.4rem;line-height:1.25;margin:0}
h2{font-size:1rem;margin:0 0 .5rem}
p{margin:0}
.quiet{color:var(--quiet);font-weight:400}
.mark{font:600 .7em/1 ui-monospace,"DejaVu Sans Mono",monospace;color:var(--bad-ink);background:var(--bad);
border-radius:.3em;padding:.15em .3em}
.card{background:var(--card);border:1px solid var(--edge);border-radius:1rem;padding:1rem 1.25rem;margin:0 0 1rem;
box-shadow:0 1px 3px #0000001a}
.bad{background:var(--bad);color:var(--bad-ink);border-color:transparent}
.warn{background:var(--warn);color:var(--warn-ink);border-color:transparent}
.warn .quiet{color:inherit;opacity:.75}
.head{display:grid;grid-template-columns:auto 1fr;gap:.25rem 1rem;align-items:center}
.face{grid-row:span 2;width:3rem;height:3rem;border-radius:50%;display:grid;place-items:center;overflow:hidden;
background:var(--accent);color:var(--on-accent);font-size:1.3rem;font-weight:600}
.chips{display:flex;flex-wrap:wrap;gap:.4rem;margin:.75rem 0 0;padding:0;list-style:none}
.chips li{background:var(--chip);border-radius:1rem;padding:.1rem .7rem;font-size:.85rem}
.chips .high{background:var(--bad);color:var(--bad-ink)}
dl{display:grid;grid-template-columns:minmax(4.5rem,auto) 1fr;gap:.15rem 1rem;margin:.75rem 0 0}
dt{color:var(--quiet)}
dd{margin:0;min-width:0}
summary{cursor:pointer;font-weight:600}
details>:not(summary){margin-top:.75rem}
details ul{margin-bottom:0;padding-left:1.2rem}
table{border-collapse:collapse;width:100%;font-size:.9rem}
td{border-top:1px solid var(--edge);padding:.3rem .75rem .3rem 0;vertical-align:top}
td:first-child{white-space:nowrap;color:var(--quiet)}
.note{color:var(--quiet);margin:0 0 1rem}
)";

constexpr char kMedia[] = R"(
.slides,.things{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,15rem),1fr));gap:1.25rem 1rem;
margin:0 0 1rem;align-items:start}
.slide{min-width:0;width:100%;max-width:22rem;margin:0 auto}
.phone{background:var(--bezel);border:1px solid var(--edge);border-radius:1.75rem;padding:.8rem .6rem;box-shadow:0 6px 20px #00000033;
display:grid;gap:.5rem;position:relative}
.screen{background:var(--screen);color:var(--ink);overflow:hidden;border-radius:1.1rem}
.laid{position:relative;width:100%}
.flow{padding:.75rem;display:grid;gap:.6rem}
.region{position:absolute;overflow:auto;display:grid}
.region>img,.region>video{position:absolute;width:100%;height:100%}
.region>.text,.region>.missing{padding:.4rem .6rem}
.medium>img,.medium>video,.thing>img,.thing>video{display:block;max-width:100%;height:auto;max-height:32rem;
margin:0 auto;border-radius:.5rem}
.medium>img,.thing>img{min-width:min(100%,4rem);object-fit:contain}
audio{display:block;width:100%}
.text{white-space:pre-wrap;unicode-bidi:plaintext}
.missing{color:var(--quiet);font-style:italic;font-size:.9rem;text-align:center;align-self:center}
.screen .missing{color:inherit;opacity:.7}
.list{list-style:none;margin:.5rem .25rem 0;padding:0;font-size:.85rem}
.thing{background:var(--card);border:1px solid var(--edge);border-radius:1rem;padding:.9rem;display:grid;gap:.6rem;
min-width:0}
.thing>.text,.medium>.text,.source{max-height:28rem;overflow:auto}
.things.talk{grid-template-columns:minmax(0,34rem);justify-content:center}
.caption{font-size:.85rem}
.source{font:.85rem/1.45 ui-monospace,"DejaVu Sans Mono",monospace;white-space:pre-wrap}
)";

// Without a script: the slides lie on each other and take turns while the box is checked.
constexpr char kPlaying[] = R"(
#play{position:absolute;opacity:0}
.button{display:inline-block;background:var(--accent);color:var(--on-accent);border-radius:2rem;cursor:pointer;
padding:.45rem 1.2rem;font-weight:600;margin:0 0 1rem}
#play:focus-visible+.button{outline:3px solid var(--ink);outline-offset:2px}
.button .stop,#play:checked+.button .start{display:none}
#play:checked+.button .stop{display:inline}
.bar{position:absolute;left:1.6rem;right:1.6rem;bottom:.25rem;height:3px;border-radius:2px;background:#fff;
transform:scaleX(0);transform-origin:left}
#play:checked~.slides{grid-template-columns:minmax(0,22rem);justify-content:center}
#play:checked~.slides .slide{grid-area:1/1;visibility:hidden}
#play:checked~.slides .timed{visibility:hidden}
@keyframes on{from,to{visibility:visible}}
@keyframes grow{from{transform:scaleX(0)}to{transform:scaleX(1)}}
@media print{.button{display:none}.card,.phone{box-shadow:none}.slide,.thing{break-inside:avoid}}
)";

} // namespace

QByteArray htmlStyle()
{
    return QByteArray(kColours) + kPage + kMedia + kPlaying;
}

} // namespace wmsg::cli
