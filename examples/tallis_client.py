#!/usr/bin/env python3
"""A small client of Tallis's local WebSocket API, using only the standard library.

Prints the program's status and the spots the table shows; with --tune KEY it
tunes the radio to that spot (KEY as printed: call|reference|kHz); with
--spot KEY it re-spots that station, after asking you, to its programme's
service (POTA, WWBOTA) or to a DX cluster node.

    python3 tallis_client.py
    python3 tallis_client.py --tune "K1ABC|US-1234|14062"
    python3 tallis_client.py --spot "K1ABC|US-1234|14062" --comment "tnx QSO"
"""

import argparse
import base64
import json
import os
import socket
import struct
import sys


class WebSocket:
    """Just enough of RFC 6455 for text messages to and from a local server."""

    def __init__(self, host, port, timeout=10):
        self.sock = socket.create_connection((host, port), timeout=timeout)
        key = base64.b64encode(os.urandom(16)).decode()
        request = (
            f"GET / HTTP/1.1\r\nHost: {host}:{port}\r\nUpgrade: websocket\r\n"
            f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\n"
            "Sec-WebSocket-Version: 13\r\n\r\n"
        )
        self.sock.sendall(request.encode())
        response = b""
        while b"\r\n\r\n" not in response:
            chunk = self.sock.recv(4096)
            if not chunk:
                raise ConnectionError("the server closed the connection during the handshake")
            response += chunk
        head, self.buffer = response.split(b"\r\n\r\n", 1)
        if b" 101 " not in head.split(b"\r\n", 1)[0]:
            raise ConnectionError(head.split(b"\r\n", 1)[0].decode(errors="replace"))

    def _read(self, n):
        while len(self.buffer) < n:
            chunk = self.sock.recv(65536)
            if not chunk:
                raise ConnectionError("connection closed")
            self.buffer += chunk
        data, self.buffer = self.buffer[:n], self.buffer[n:]
        return data

    def _send_frame(self, opcode, payload):
        mask = os.urandom(4)
        header = bytes([0x80 | opcode])
        if len(payload) < 126:
            header += bytes([0x80 | len(payload)])
        elif len(payload) < 65536:
            header += bytes([0x80 | 126]) + struct.pack("!H", len(payload))
        else:
            header += bytes([0x80 | 127]) + struct.pack("!Q", len(payload))
        masked = bytes(b ^ mask[i % 4] for i, b in enumerate(payload))
        self.sock.sendall(header + mask + masked)

    def send(self, text):
        self._send_frame(0x1, text.encode("utf-8"))

    def receive(self):
        """The next text message, with fragments joined and pings answered."""
        message = b""
        while True:
            first, second = self._read(2)
            opcode, length = first & 0x0F, second & 0x7F
            if length == 126:
                (length,) = struct.unpack("!H", self._read(2))
            elif length == 127:
                (length,) = struct.unpack("!Q", self._read(8))
            payload = self._read(length)  # a server never masks
            if opcode == 0x8:
                raise ConnectionError("the server closed the connection")
            if opcode == 0x9:
                self._send_frame(0xA, payload)
                continue
            if opcode in (0x0, 0x1):
                message += payload
                if first & 0x80:
                    return message.decode("utf-8")

    def close(self):
        try:
            self._send_frame(0x8, struct.pack("!H", 1000))
        finally:
            self.sock.close()


class TallisApi:
    def __init__(self, host="127.0.0.1", port=2103):
        self.ws = WebSocket(host, port)
        self.next_id = 0

    def command(self, cmd, **data):
        """Sends a command and returns its reply's data; events that arrive meanwhile are skipped."""
        self.next_id += 1
        request_id = str(self.next_id)
        self.ws.send(json.dumps({"type": "cmd", "id": request_id, "cmd": cmd, "data": data}))
        while True:
            message = json.loads(self.ws.receive())
            if message.get("type") == "reply" and message.get("id") == request_id:
                if not message["ok"]:
                    raise RuntimeError(f"{cmd}: {message['error']}")
                return message["data"]


def spot_request(spot, comment, to):
    """The spot.post data for a spot of the table: its own service, else the cluster."""
    source = to or (spot["source"] if spot["source"] in ("POTA", "WWBOTA") else "DX")
    return {
        "callsign": spot["callsign"],
        "freq_khz": spot["freq_khz"],
        "mode": spot["mode"] or "CW",
        "reference": spot["reference"],
        "source": source,
        "comments": comment,
    }


def post_spot(api, spots, key, comment, to, ask=input):
    """Asks before posting: a spot goes out in the operator's name."""
    found = [s for s in spots if s["key"] == key]
    if not found:
        raise RuntimeError(f"spot.post: no spot with key {key}")
    data = spot_request(found[0], comment, to)
    where = "a DX cluster node" if data["source"] == "DX" else data["source"]
    print(f"Spot {data['callsign']} {data['reference']} on {data['freq_khz']:.1f} kHz {data['mode']} "
          f"\"{data['comments']}\" to {where}?")
    if ask("Post it? [y/N] ").strip().lower() not in ("y", "yes"):
        print("Not posted.")
        return None
    reply = api.command("spot.post", **data)
    print(f"Spotted {data['callsign']} on {reply['posted_to']}")
    return reply


def main():
    parser = argparse.ArgumentParser(description="Show Tallis's status and spots; optionally tune a spot.")
    parser.add_argument("--host", default="127.0.0.1")
    parser.add_argument("--port", type=int, default=2103)
    parser.add_argument("--tune", metavar="KEY", help="tune the radio to the spot with this key")
    parser.add_argument("--spot", metavar="KEY", help="re-spot the station of this key (asks first)")
    parser.add_argument("--comment", default="", help="the comment of --spot")
    parser.add_argument("--to", choices=("POTA", "WWBOTA", "DX"), help="where --spot posts (default: the spot's own service, else DX)")
    args = parser.parse_args()

    try:
        api = TallisApi(args.host, args.port)
    except OSError as e:
        sys.exit(f"Cannot reach Tallis on {args.host}:{args.port}: {e}")

    status = api.command("status.get")
    radio = f"{status['radio_freq_khz']:.1f} kHz {status['radio_mode']}" if status["radio_connected"] else "not connected"
    print(f"Operator {status['callsign'] or '(no call sign)'}, radio {radio}, "
          f"{status['visible_spots']} of {status['total_spots']} spots shown, "
          f"{status['ws_clients']} API client(s)")

    spots = api.command("spots.get")
    for s in spots["spots"]:
        print(f"{s['freq_khz']:>10.1f}  {s['mode']:<5} {s['callsign']:<12} {s['source']:<6} "
              f"{s['reference']:<12} {s['status_str']:<9}  {s['key']}")

    if args.spot:
        try:
            post_spot(api, api.command("spots.get_all")["spots"], args.spot, args.comment, args.to)
        except RuntimeError as e:
            print(e, file=sys.stderr)
            api.ws.close()
            sys.exit(1)

    if args.tune:
        try:
            api.command("spot.tune", key=args.tune)
            print(f"Tuned to {args.tune}")
        except RuntimeError as e:
            print(e, file=sys.stderr)
            api.ws.close()
            sys.exit(1)
    api.ws.close()


if __name__ == "__main__":
    main()
