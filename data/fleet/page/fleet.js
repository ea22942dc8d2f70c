// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

"use strict";

// Which devices are there, what each shows, and calls to one of them. Texts of devices become text nodes only.

const reconnectMs = 3000;
const repeatMs = 2000;
const timeLimitSeconds = 20;

const controller = "page-" + randomHex();
const devices = new Map(); // rows by the names of devices
const pending = new Map(); // calls by their ids
let client = null;

function randomHex() {
  const bytes = crypto.getRandomValues(new Uint8Array(6));
  return Array.from(bytes, (byte) => byte.toString(16).padStart(2, "0")).join("");
}

function element(id) {
  return document.getElementById(id);
}

function parsed(payload) {
  try {
    const value = JSON.parse(payload);
    return value !== null && typeof value === "object" ? value : {};
  } catch {
    return {};
  }
}

function connect() {
  if (client !== null) {
    client.onClose = () => {};
    client.close("");
  }
  element("status").textContent = "connecting";
  try {
    client = new MqttClient(element("url").value, controller, element("user").value,
                            element("password").value);
  } catch (error) {
    client = null;
    element("status").textContent = error.message;
    return;
  }
  client.onConnect = () => {
    element("status").textContent = "connected";
    client.subscribe("tavo/v1/+/online", "tavo/v1/+/info", "tavo/v1/+/state/+",
                     "tavo/v1/+/answer/" + controller);
  };
  client.onMessage = take;
  client.onClose = (reason) => {
    element("status").textContent = reason + "; trying again";
    setTimeout(connect, reconnectMs);
  };
}

// Takes a message about "tavo/v1/DEVICE/WHAT/DETAIL".
function take(topic, payload) {
  const [, , name, what, detail] = topic.split("/");
  const device = deviceRow(name);
  const value = parsed(payload);
  if (what === "online") {
    const isOnline = payload === "1";
    device.state.textContent = isOnline ? "online" : "away";
    device.state.className = device.state.textContent;
  } else if (what === "info") {
    device.groups.textContent = Array.isArray(value.groups) ? value.groups.join(", ") : "";
  } else if (what === "state" && detail === "display") {
    device.shows.textContent = value.shown ? shownText(value) : "";
  } else if (what === "state" && detail === "sound") {
    device.plays.textContent = value.sounding ? "a sound" : "";
  } else if (what === "answer" && pending.get(value.id) === name) {
    pending.delete(value.id);
    device.answer.textContent = value.error ? "error: " + value.error
      : value.shown ? "shown" : value.sounding ? "sounding" : "done";
  }
}

function shownText(state) {
  const text = String(state.text ?? "");
  const title = String(state.title ?? "");
  return text === "" ? title : title + ": " + text;
}

// The row of a device, made for its first message. Rows are sorted by name.
function deviceRow(name) {
  let device = devices.get(name);
  if (device !== undefined) {
    return device;
  }
  const row = document.createElement("tr");
  row.dataset.device = name;
  device = {};
  for (const cell of ["name", "state", "groups", "shows", "plays", "calls", "answer"]) {
    device[cell] = row.insertCell();
    device[cell].dataset.cell = cell;
  }
  device.name.textContent = name;
  device.calls.append(
    button("Ring", () => call(name, { call: "sound", sound: element("sound").value })),
    button("Show", () => call(name, { call: "show", title: element("title").value })));
  devices.set(name, device);
  const rows = Array.from(element("devices").rows);
  element("devices").insertBefore(row, rows.find((other) => other.dataset.device > name) ?? null);
  return device;
}

function button(label, act) {
  const made = document.createElement("button");
  made.type = "button";
  made.textContent = label;
  made.addEventListener("click", act);
  return made;
}

// Calls the device, and again with the same id until it has answered or the time is up.
function call(name, wanted) {
  const id = "page-" + randomHex();
  const message = JSON.stringify({ id, from: controller, ...wanted });
  const end = Date.now() + timeLimitSeconds * 1000;
  pending.set(id, name);
  deviceRow(name).answer.textContent = "calling";
  const send = () => {
    if (!pending.has(id)) {
      return;
    }
    const left = Math.ceil((end - Date.now()) / 1000);
    if (left <= 0) {
      pending.delete(id);
      deviceRow(name).answer.textContent = "no answer";
      return;
    }
    client.publish("tavo/v1/" + name + "/call", message, left);
    setTimeout(send, repeatMs);
  };
  send();
}

for (const form of ["broker", "message"]) {
  element(form).addEventListener("submit", (event) => event.preventDefault());
}
element("connect").addEventListener("click", connect);
element("url").value = new URLSearchParams(location.search).get("broker") ?? "";
