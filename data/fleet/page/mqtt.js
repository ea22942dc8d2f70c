// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

"use strict";

// The packets of MQTT 5 that a page needs, over a WebSocket.
//
// onConnect(), onMessage(topic, text) and onClose(reason) are called from the event loop. After onClose(), the
// object is of no more use.
class MqttClient {
  static maxPacketBytes = 1 << 20;
  static keepAliveSeconds = 30;

  constructor(url, clientId, user, password) {
    this.onConnect = () => {};
    this.onMessage = () => {};
    this.onClose = () => {};
    this.nextId = 1;
    this.received = new Uint8Array(0);
    this.isClosed = false;
    this.isAlive = true;
    // Proxies in front of a broker know the first name, brokers the second one.
    this.socket = new WebSocket(url, ["binary", "mqtt"]);
    this.socket.binaryType = "arraybuffer";
    this.socket.onopen = () => this.send(0x10, connectBody(clientId, user, password));
    this.socket.onmessage = (event) => this.take(new Uint8Array(event.data));
    this.socket.onclose = () => this.close("the connection has ended");
  }

  subscribe(...filters) {
    const body = [...twoBytes(this.newId()), 0];
    for (const filter of filters) {
      body.push(...text(filter), 1);
    }
    this.send(0x82, body);
  }

  // With QoS 1. The broker drops it after the seconds.
  publish(topic, payload, expirySeconds) {
    const expiry = [0x02, 0, ...[16, 8, 0].map((shift) => (expirySeconds >> shift) & 0xff)];
    const body = [...text(topic), ...twoBytes(this.newId()), expiry.length, ...expiry];
    this.send(0x32, [...body, ...new TextEncoder().encode(payload)]);
  }

  close(reason) {
    if (this.isClosed) {
      return;
    }
    this.isClosed = true;
    clearInterval(this.keepAlive);
    this.socket.close();
    this.onClose(reason);
  }

  newId() {
    const id = this.nextId;
    this.nextId = (id % 0xffff) + 1;
    return id;
  }

  send(type, body) {
    if (!this.isClosed && this.socket.readyState === WebSocket.OPEN) {
      this.socket.send(new Uint8Array([type, ...lengthBytes(body.length), ...body]));
    }
  }

  // Messages of the WebSocket may end within a packet.
  take(data) {
    const all = new Uint8Array(this.received.length + data.length);
    all.set(this.received);
    all.set(data, this.received.length);
    let at = 0;
    try {
      for (;;) {
        const packet = packetAt(all, at);
        if (packet === null) {
          break;
        }
        at = packet.end;
        this.handle(packet.type, new Reader(packet.body));
      }
    } catch (error) {
      this.close(error.message);
    }
    this.received = all.slice(at);
  }

  handle(type, reader) {
    this.isAlive = true;
    switch (type >> 4) {
      case 2:
        this.handleConnack(reader);
        break;
      case 3:
        this.handlePublish(type, reader);
        break;
      case 9:
        this.handleSuback(reader);
        break;
      case 14:
        throw new Error("the broker disconnects: reason " + (reader.isAtEnd() ? 0 : reader.byte()));
    }
  }

  handleConnack(reader) {
    reader.byte();
    const reason = reader.byte();
    if (reason !== 0) {
      throw new Error("the broker refuses the connection: reason " + reason);
    }
    this.keepAlive = setInterval(() => this.ping(), MqttClient.keepAliveSeconds * 500);
    this.onConnect();
  }

  handleSuback(reader) {
    reader.twoBytes();
    reader.skip(reader.length());
    while (!reader.isAtEnd()) {
      if (reader.byte() >= 0x80) {
        throw new Error("the broker refuses a subscription");
      }
    }
  }

  handlePublish(type, reader) {
    const topic = reader.text();
    const hasId = (type & 0x06) !== 0;
    const id = hasId ? reader.twoBytes() : 0;
    reader.skip(reader.length());
    const payload = new TextDecoder().decode(reader.rest());
    if (hasId) {
      this.send(0x40, twoBytes(id));
    }
    this.onMessage(topic, payload);
  }

  ping() {
    if (!this.isAlive) {
      this.close("the broker does not answer");
      return;
    }
    this.isAlive = false;
    this.send(0xc0, []);
  }
}

function twoBytes(number) {
  return [number >> 8, number & 0xff];
}

function text(string) {
  const bytes = new TextEncoder().encode(string);
  return [...twoBytes(bytes.length), ...bytes];
}

// A length is written seven bits at a time, the lowest first.
function lengthBytes(length) {
  const bytes = [];
  do {
    const low = length & 0x7f;
    length >>= 7;
    bytes.push(length > 0 ? low | 0x80 : low);
  } while (length > 0);
  return bytes;
}

function connectBody(clientId, user, password) {
  const cleanStart = 0x02;
  const flags = cleanStart | (user ? 0x80 : 0) | (password ? 0x40 : 0);
  const limit = [0x27, ...[24, 16, 8, 0].map((shift) => (MqttClient.maxPacketBytes >> shift) & 0xff)];
  return [
    ...text("MQTT"), 5, flags, ...twoBytes(MqttClient.keepAliveSeconds), limit.length, ...limit,
    ...text(clientId), ...(user ? text(user) : []), ...(password ? text(password) : []),
  ];
}

// The packet that begins there, or null if it is not complete.
function packetAt(data, start) {
  let length = 0;
  let at = start + 1;
  for (let shift = 0; ; shift += 7, at += 1) {
    if (at >= data.length) {
      return null;
    }
    if (shift > 21) {
      throw new Error("the broker sends something else than MQTT");
    }
    length |= (data[at] & 0x7f) << shift;
    if (data[at] < 0x80) {
      break;
    }
  }
  if (length > MqttClient.maxPacketBytes) {
    throw new Error("the broker sends a packet that is too large");
  }
  const end = at + 1 + length;
  return end > data.length ? null : { type: data[start], body: data.subarray(at + 1, end), end };
}

// Reads the body of a packet. Throws at its end.
class Reader {
  constructor(bytes) {
    this.bytes = bytes;
    this.at = 0;
  }

  isAtEnd() {
    return this.at >= this.bytes.length;
  }

  byte() {
    if (this.isAtEnd()) {
      throw new Error("the broker sends something else than MQTT");
    }
    return this.bytes[this.at++];
  }

  twoBytes() {
    return (this.byte() << 8) | this.byte();
  }

  length() {
    let length = 0;
    for (let shift = 0; shift <= 21; shift += 7) {
      const byte = this.byte();
      length |= (byte & 0x7f) << shift;
      if (byte < 0x80) {
        break;
      }
    }
    return length;
  }

  skip(count) {
    this.at += count;
  }

  text() {
    const length = this.twoBytes();
    this.skip(length);
    return new TextDecoder().decode(this.bytes.subarray(this.at - length, this.at));
  }

  rest() {
    return this.bytes.subarray(this.at);
  }
}
