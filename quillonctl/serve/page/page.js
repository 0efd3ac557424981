"use strict";

const pollEvery = 1000;
const patience = 4000;

const $ = id => document.getElementById(id);
const svgNames = new Set(["svg", "rect", "line", "path"]);

/** An element with attributes and children; a text is a child too. */
function make(name, attributes = {}, ...children) {
   const element = svgNames.has(name) ? document.createElementNS("http://www.w3.org/2000/svg", name)
                                      : document.createElement(name);
   for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
   element.append(...children);
   return element;
}

/** Changes a text only if it is another: a selection stays. */
function say(element, text) { if (element.textContent !== text) element.textContent = text; }

/** A number with its unit, which stay in one line. */
const number = (value, decimals, unit) => value === null ? "–" : `${value.toFixed(decimals)}\u00a0${unit}`;
const age = seconds => seconds < 120 ? `${seconds.toFixed(seconds < 10 ? 1 : 0)} s` : `${Math.round(seconds / 60)} min`;
const yesNo = value => value === null ? "–" : value ? "yes" : "no";

/** How a state looks, and its word where there is little room. */
const looks = {
   "ok": ["good", "ok"], "alert": ["warn", "alert"], "critical": ["bad", "critical"], "stalled": ["bad", "stalled"],
   "absent": ["", "empty"], "powered": ["good", "powered"], "requesting": ["info", "asks"],
   "requesting dual": ["info", "asks"], "detecting": ["", "idle"], "disabled": ["", "off"],
   "overload": ["warn", "over"], "fault": ["bad", "fault"], "failed": ["failed", "failed"], "waiting": ["", "…"],
};
const lookOf = object => looks[object.state] ?? ["warn", object.state];

const isWrong = object => ["alert", "critical", "stalled", "overload", "fault", "failed", "unknown"].includes(object.state);

// --- The front panel ---

function jack() {
   return make("svg", { viewBox: "0 0 28 20", "aria-hidden": "true" },
      make("path", { fill: "currentColor", d: "M1 2h26v13h-5v3H6v-3H1z" }),
      make("path", { stroke: "var(--surface)", "stroke-width": 1.6, d: "M8 3v5M12 3v5M16 3v5M20 3v5" }));
}

function cage() {
   return make("svg", { viewBox: "0 0 46 20", "aria-hidden": "true" },
      make("rect", { x: 1, y: 2, width: 44, height: 16, rx: 2, fill: "currentColor" }),
      make("path", { stroke: "var(--surface)", "stroke-width": 1.6, d: "M6 14h34" }));
}

/** How a setting of an LED looks. */
const ledLooks = {
   "off": "off", "good": "good", "warning": "warn", "warning or inactive": "warn", "warning or bad": "warn", "bad": "bad",
   "beacon": "beacon", "unknown": "off",
};

/** What an LED shows, in a word or two. */
const ledText = led => led.error ? "failed" : led.setting ?? "not known";

function showLed(element, led) {
   element.className = `led ${led.error ? "failed" : ledLooks[led.setting] ?? ""}`;
}

/** A port or a cage, with the LED beside it. */
function connector(object, picture, kind, numberText) {
   const led = make("span", { class: "led" });
   const caption = make("span", { class: "caption" });
   const element = make("button", { type: "button", id: `on-panel-${object.name}`, "aria-expanded": "false" },
      make("span", { class: "top" }, numberText, led), picture, caption);
   element.addEventListener("click", () => select(object.name));
   return {
      element,
      update(now, all) {
         const [stateLook, word] = lookOf(now);
         const look = now.state === "ok" && now.rx_los ? "info" : stateLook;
         const ledObject = all.get(`led.${now.name}`);
         element.className = `port ${kind} ${look}`;
         led.hidden = !ledObject;
         if (ledObject) showLed(led, ledObject);
         say(caption, captionOf(now, word));
         element.setAttribute("aria-label", `${now.name}: ${describe(now)}; ${ledObject ? `LED ${ledText(ledObject)}` : "no LED"}`);
         element.setAttribute("title", ledObject ? `LED ${ledText(ledObject)}` : "no LED");
         element.setAttribute("aria-expanded", String(selected === now.name));
      },
   };
}

function captionOf(object, word) {
   if (object.state === "powered") return `${object.power_watts?.toFixed(1) ?? "–"}W`;
   if (object.kind === "xcvr" && object.state === "ok") return object.tx_disable ? "TX off" : object.rx_los ? "no light" : "ok";
   return word;
}

/** What is to be said of an object in a sentence. */
function describe(object) {
   if (object.error) return object.state === "waiting" ? "not read yet" : object.error.message;
   switch (object.kind) {
   case "temp_sensor": return object.state === "ok" ? number(object.temperature_celsius, 1, "°C")
      : `${number(object.temperature_celsius, 1, "°C")}, ${object.state} from ${number(object[`${object.state}_celsius`], 1, "°C")}`;
   case "fan": return `${object.state} at ${object.rpm} rpm`;
   case "xcvr": return object.state === "absent" ? "no module" : [object.state === "fault" ? "transmit fault" : "module present",
      object.rx_los ? "loss of signal" : "", object.tx_disable ? "transmitter off" : ""].filter(Boolean).join(", ");
   case "poe_port": return object.state === "powered" ? `powered, ${number(object.power_watts, 1, "W")}` : object.state;
   default: return object.state;
   }
}

function lamp(object) {
   const led = make("span", { class: "led" });
   const text = make("span");
   return {
      element: make("span", { class: "lamp" }, led, text),
      update(now) {
         showLed(led, now);
         say(text, `${now.name.replace(/^led\./, "")}: ${ledText(now)}`);
         led.parentNode.setAttribute("title", now.error ? describe(now) : `${now.name}: ${ledText(now)}`);
      },
   };
}

let selected = decodeURIComponent(location.hash.slice(1));

function select(name) {
   selected = selected === name ? "" : name;
   history.replaceState(null, "", selected ? `#${encodeURIComponent(selected)}` : " ");
   if (shown) show(shown);
}

/** All that is known of the selected port or cage. */
function showDetails(all) {
   const object = all.get(selected);
   $("details").hidden = !object || !["poe_port", "xcvr"].includes(object.kind);
   if ($("details").hidden) return;
   const led = all.get(`led.${object.name}`);
   const facts = object.kind === "poe_port" ? {
      "State": object.state, "Power": number(object.power_watts, 1, "W"),
      "Device class": object.device_class ?? "–", "Voltage": number(object.voltage_volts, 1, "V"),
      "Current": number(object.current_amperes, 3, "A"), "Temperature": number(object.temperature_celsius, 1, "°C"),
   } : {
      "State": object.state, "Module": object.present === null ? "–" : object.present ? "present" : "absent",
      "Transmit fault": yesNo(object.tx_fault), "Loss of signal": yesNo(object.rx_los), "Transmitter off": yesNo(object.tx_disable),
   };
   facts["LED"] = led ? ledText(led) : "none";
   facts["Read"] = object.age === null ? "not yet" : `${age(object.age)} ago`;
   const fact = ([key, value], name = "") => make("div", { class: name }, make("dt", {}, key), make("dd", {}, String(value)));
   $("details").replaceChildren(make("h2", {}, object.name), make("dl", {}, ...Object.entries(facts).map(entry => fact(entry)),
      ...(object.error ? [fact(["Reason", object.error.message], "long")] : [])));
}

// --- The cards below ---

/** A line with name, value and state, and what `more` has below it. */
function row(object, valueOf, more) {
   const value = make("span", { class: "value" });
   const state = make("span", { class: "state" });
   const why = make("span", { class: "why" });
   return {
      element: make("div", { class: "row", id: `row-${object.name}` },
         make("div", { class: "line" }, make("span", { class: "name" }, object.name), value, state, why), ...(more ? [more.element] : [])),
      update(now) {
         const [look] = lookOf(now);
         say(value, valueOf(now));
         say(state, now.state);
         state.className = `state ${look === "failed" ? "bad" : look}`;
         say(why, now.state === "failed" ? now.error.message : "");
         more?.update(now, look);
      },
   };
}

/** A value on its scale, with marks. The words are in the line above. */
function bar(rangeOf) {
   const percent = (value, [low, high]) => Math.min(100, Math.max(0, (value - low) / (high - low) * 100));
   const fill = make("rect", { class: "fill", y: 3, height: 8, rx: 2 });
   const marks = ["alert", "critical"].map(name => make("line", { class: name, y1: 0, y2: 14 }));
   const element = make("svg", { class: "bar", "aria-hidden": "true" },
      make("rect", { class: "track", y: 3, width: "100%", height: 8, rx: 2 }), fill, ...marks);
   return {
      element,
      update(now, look) {
         const { range, value, alert, critical } = rangeOf(now);
         fill.setAttribute("class", `fill ${look}`);
         fill.setAttribute("width", value === null ? 0 : `${percent(value, range)}%`);
         for (const [mark, at] of [[marks[0], alert], [marks[1], critical]]) {
            mark.style.display = at === undefined ? "none" : "";
            mark.setAttribute("x1", `${percent(at ?? 0, range)}%`);
            mark.setAttribute("x2", `${percent(at ?? 0, range)}%`);
         }
      },
   };
}

const both = (...parts) => ({
   element: make("div", {}, ...parts.map(part => part.element)),
   update(now, look) { for (const part of parts) part.update(now, look); },
});

const scale = textOf => {
   const element = make("div", { class: "scale" });
   return { element, update(now) { say(element, textOf(now)); } };
};

const cards = [
   { title: "Temperatures", kinds: ["temp_sensor"], make: object => row(object, now => number(now.temperature_celsius, 1, "°C"),
      both(bar(now => ({ range: [0, now.critical_celsius * 1.2], value: now.temperature_celsius, alert: now.alert_celsius, critical: now.critical_celsius })),
         scale(now => `alert from ${number(now.alert_celsius, 1, "°C")}, critical from ${number(now.critical_celsius, 1, "°C")}`))) },
   { title: "Fans", kinds: ["fan"], make: object => row(object, now => number(now.rpm, 0, "rpm"),
      both(bar(now => ({ range: [0, now.max_rpm], value: now.rpm })), scale(now => `of ${now.max_rpm} rpm`))) },
   { title: "Transceivers", kinds: ["xcvr"], make: object => row(object, () => "",
      scale(now => now.state === "absent" ? "no module" : `TX fault ${yesNo(now.tx_fault)}, RX LOS ${yesNo(now.rx_los)}, TX disable ${yesNo(now.tx_disable)}`)) },
   { title: "System", kinds: ["system", "psu", "slot", "gpio"], make: object => row(object, now => now.version
      ?? (now.kind === "slot" ? [now.model, now.serial].filter(Boolean).join(" ") : now.kind === "gpio" ? String(now.value ?? "–") : "")) },
];

// --- The page as a whole ---

let parts = [];
let drawn = "";
let shown = null;

/** Draws what the board has; values come by updates. */
function draw(objects) {
   parts = [];
   const add = (object, part) => { parts.push([object.name, part]); return part.element; };
   const of = (...kinds) => objects.filter(object => kinds.includes(object.kind));
   const ports = of("poe_port"), cages = of("xcvr");
   const besides = new Set([...ports, ...cages].map(object => `led.${object.name}`));
   const lamps = of("led").filter(object => !besides.has(object.name));
   const group = (name, label, ...children) => make("div", { class: name, role: "group", "aria-label": label }, ...children);
   const port = object => add(object, connector(object, jack(), "jack", object.name.match(/\d+$/)?.[0] ?? object.name));
   const blocks = [];
   for (let i = 0; i < ports.length; i += 12) blocks.push(make("div", { class: "block" }, ...ports.slice(i, i + 12).map(port)));
   const groups = [
      lamps.length && group("lamps", "System LEDs", ...lamps.map(object => add(object, lamp(object)))),
      ports.length && group("ports", "PoE ports", ...blocks),
      cages.length && group("block cages", "Transceiver cages", ...cages.map(object => add(object, connector(object, cage(), "cage", object.name)))),
   ].filter(Boolean);
   $("panel").replaceChildren(...groups);
   $("panel").hidden = !groups.length;
   $("cards").replaceChildren(...cards.filter(card => of(...card.kinds).length).map(card => make("section", { class: "card" },
      make("h2", {}, card.title), ...of(...card.kinds).map(object => add(object, card.make(object))))));
}

/** What is wrong, with objects of which the same is to be said in one line. */
function showAttention(objects) {
   const lines = new Map();
   for (const object of objects.filter(isWrong)) {
      const text = describe(object);
      lines.set(text, [...(lines.get(text) ?? []), object.name]);
   }
   const items = [...lines].map(([text, names]) => {
      const others = names.length > 4 ? `${names[0]} and ${names.length - 1} others` : names.join(", ");
      return make("li", {}, make("b", {}, others), `: ${text}`);
   });
   const isWaiting = objects.some(object => object.state === "waiting");
   $("attention").hidden = isWaiting && !items.length;
   $("attention").className = items.length ? "ill" : "well";
   say($("attention-title"), items.length ? "Needs attention" : "All is well");
   const text = items.map(item => item.textContent).join("\n");
   if ($("attention-list").dataset.text !== text) {
      $("attention-list").dataset.text = text;
      $("attention-list").replaceChildren(...items);
   }
}

function showTotals(objects) {
   const ports = objects.filter(object => object.kind === "poe_port");
   const counts = new Map();
   for (const port of ports) counts.set(port.state, (counts.get(port.state) ?? 0) + 1);
   const powers = ports.map(port => port.power_watts).filter(power => power !== null);
   const watts = powers.length ? powers.reduce((sum, power) => sum + power) : null;
   say($("totals"), ports.length ? `${ports.length} PoE ports: ${[...counts].map(([state, count]) => `${count} ${state}`).join(", ")}; ${number(watts, 1, "W")}` : "");
}

/** How fresh all is. */
function showPulse(document, ages) {
   const read = ages.filter(one => one !== null);
   if (!read.length) return pulse("wait", "waiting for the first readings");
   const youngest = Math.min(...read), oldest = Math.max(...read);
   const isSilent = youngest > Math.max(2 * document.interval_seconds, 3);
   const busy = document.busy && document.busy.seconds > 2 ? `; the library has been busy with ${document.busy.object} for ${age(document.busy.seconds)}` : "";
   notice(isSilent ? `No reading has come for ${age(youngest)}${busy}.` : "");
   $("main").classList.toggle("stale", youngest >= document.old_after_seconds);
   pulse(isSilent ? "warn" : "good", `readings at most ${age(oldest)} old`);
}

function pulse(level, text) {
   $("pulse").dataset.level = level;
   say($("pulse-text"), text);
}

function notice(text) {
   say($("notice"), text);
   $("notice").hidden = !text;
}

function show(answer) {
   shown = answer;
   const ages = answer.ages_seconds;
   const objects = answer.status.objects.map((object, i) => ({ ...object, age: ages[i], setting: answer.led_settings[object.name], state: ages[i] === null ? "waiting" : object.state }));
   const all = new Map(objects.map(object => [object.name, object]));
   const names = objects.map(object => `${object.kind} ${object.name}`).join();
   if (names !== drawn) {
      drawn = names;
      draw(objects);
   }
   for (const [name, part] of parts) part.update(all.get(name), all);
   document.title = `${answer.status.board} front panel`;
   say($("board"), answer.status.board);
   say($("program"), `quillonctl ${answer.version}, reads every ${answer.interval_seconds} s`);
   showAttention(objects);
   showTotals(objects);
   showDetails(all);
   showPulse(answer, ages);
}

let lostSince = null;

async function poll() {
   try {
      const response = await fetch("/status.json", { cache: "no-store", signal: AbortSignal.timeout(patience) });
      if (!response.ok) throw new Error(response.statusText);
      const answer = await response.json();
      lostSince = null;
      show(answer);
   } catch {
      lostSince ??= new Date();
      pulse("bad", "no connection");
      notice(`No connection to quillonctl serve since ${lostSince.toLocaleTimeString()}. What you see is from before.`);
      $("main").classList.add("stale");
   }
   setTimeout(poll, pollEvery);
}

poll();
