"""Runs inside the panel as root: commands, fingers and the list of windows, asked for over a virtual serial line, which
works without network and whatever happens to the network. One JSON object a line in both directions."""

import base64
import ctypes
import fcntl
import json
import os
import struct
import subprocess
import sys
import time

EV_SYN, EV_KEY, EV_ABS = 0, 1, 3
BTN_TOUCH = 0x14A
ABS_X, ABS_Y, MT_SLOT, MT_X, MT_Y, MT_ID = 0x00, 0x01, 0x2F, 0x35, 0x36, 0x39
SET_EV, SET_KEY, SET_ABS, SET_PROPERTY = 0x40045564, 0x40045565, 0x40045567, 0x4004556E
DEVICE_SETUP, ABS_SETUP, DEVICE_CREATE = 0x405C5503, 0x401C5504, 0x5501
PROPERTY_DIRECT = 1
SLOTS = 5


class Fingers:
    """A touch screen."""

    def __init__(self):
        subprocess.run(["modprobe", "uinput"], check=False)
        self._device = os.open("/dev/uinput", os.O_WRONLY)
        self._contacts = 0
        self._down = set()
        for kind in (EV_KEY, EV_ABS):
            fcntl.ioctl(self._device, SET_EV, kind)
        fcntl.ioctl(self._device, SET_KEY, BTN_TOUCH)
        fcntl.ioctl(self._device, SET_PROPERTY, PROPERTY_DIRECT)
        for axis, last in ((ABS_X, 1023), (ABS_Y, 599), (MT_SLOT, SLOTS - 1), (MT_X, 1023), (MT_Y, 599), (MT_ID, 65535)):
            fcntl.ioctl(self._device, SET_ABS, axis)
            fcntl.ioctl(self._device, ABS_SETUP, struct.pack("H2x6i", axis, 0, 0, last, 0, 0, 0))
        fcntl.ioctl(self._device, DEVICE_SETUP, struct.pack("4H80sI", 3, 1, 1, 1, b"try-panel touch screen", 0))
        fcntl.ioctl(self._device, DEVICE_CREATE)

    def _emit(self, *events):
        packed = b"".join(struct.pack("qqHHi", 0, 0, *event) for event in (*events, (EV_SYN, 0, 0)))
        os.write(self._device, packed)

    def down(self, slot, x, y):
        self._contacts += 1
        first = not self._down
        self._down.add(slot)
        self._emit((EV_ABS, MT_SLOT, slot), (EV_ABS, MT_ID, self._contacts), (EV_ABS, MT_X, x), (EV_ABS, MT_Y, y),
                   *([(EV_KEY, BTN_TOUCH, 1), (EV_ABS, ABS_X, x), (EV_ABS, ABS_Y, y)] if first else []))

    def move(self, slot, x, y):
        self._emit((EV_ABS, MT_SLOT, slot), (EV_ABS, MT_X, x), (EV_ABS, MT_Y, y))

    def up(self, slot):
        self._down.discard(slot)
        self._emit((EV_ABS, MT_SLOT, slot), (EV_ABS, MT_ID, -1), *([] if self._down else [(EV_KEY, BTN_TOUCH, 0)]))

    def play(self, steps):
        for name, *values in steps:
            if name == "wait":
                time.sleep(values[0])
            else:
                getattr(self, name)(*values)


class Attributes(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int),
                ("border", ctypes.c_int), ("depth", ctypes.c_int), ("visual", ctypes.c_void_p), ("root", ctypes.c_ulong),
                ("kind", ctypes.c_int), ("gravities", ctypes.c_int * 3), ("planes", ctypes.c_ulong * 2),
                ("save_under", ctypes.c_int), ("colormap", ctypes.c_ulong), ("installed", ctypes.c_int),
                ("map_state", ctypes.c_int), ("masks", ctypes.c_long * 3), ("override", ctypes.c_int),
                ("screen", ctypes.c_void_p)]


class Windows:
    """The windows of the X server that can be seen, the lowest first."""

    def __init__(self):
        self._x = ctypes.CDLL("libX11.so.6")
        for name in ("XOpenDisplay", "XDefaultRootWindow", "XInternAtom"):
            getattr(self._x, name).restype = ctypes.c_void_p
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(None))
        # A window may be gone before it is asked for.
        self._ignore = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)(lambda display, error: 0)
        self._x.XSetErrorHandler(self._ignore)

    def _children(self, window):
        root, parent, children = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.POINTER(ctypes.c_ulong)()
        count = ctypes.c_uint()
        if not self._x.XQueryTree(self._display, window, ctypes.byref(root), ctypes.byref(parent), ctypes.byref(children),
                                  ctypes.byref(count)):
            return []
        return [ctypes.c_ulong(children[i]) for i in range(count.value)]

    def _text(self, window, name):
        kind, size = ctypes.c_ulong(), ctypes.c_int()
        count, left, data = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.POINTER(ctypes.c_char)()
        atom = ctypes.c_ulong(self._x.XInternAtom(self._display, name, 0))
        self._x.XGetWindowProperty(self._display, window, atom, ctypes.c_long(0), ctypes.c_long(256), 0, ctypes.c_ulong(0),
                                   ctypes.byref(kind), ctypes.byref(size), ctypes.byref(count), ctypes.byref(left),
                                   ctypes.byref(data))
        return data[:count.value].decode(errors="replace") if count.value and size.value == 8 else ""

    def _client(self, window):
        """The window itself, or the one inside that a program made, when the window manager's frame is around it."""
        if self._text(window, b"WM_CLASS"):
            return window
        return next(filter(None, map(self._client, self._children(window))), None)

    def list(self):
        root = ctypes.c_ulong(self._x.XDefaultRootWindow(self._display))
        found = []
        for window in self._children(root):
            look = Attributes()
            if not self._x.XGetWindowAttributes(self._display, window, ctypes.byref(look)) or look.map_state != 2:
                continue
            client = self._client(window)
            if client:
                found.append({"x": look.x, "y": look.y, "width": look.width, "height": look.height,
                              "class": self._text(client, b"WM_CLASS").split("\0")[0],
                              "title": self._text(client, b"_NET_WM_NAME") or self._text(client, b"WM_NAME")})
        return found


def display_of_the_session():
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{process}/comm", encoding="utf-8") as name:
                if name.read().strip() not in ("openbox", "updater"):
                    continue
            with open(f"/proc/{process}/environ", "rb") as environment:
                values = dict(line.split(b"=", 1) for line in environment.read().split(b"\0") if b"=" in line)
        except (OSError, ValueError):
            continue
        if b"DISPLAY" in values:
            return {"DISPLAY": values[b"DISPLAY"].decode(), "XAUTHORITY": values.get(b"XAUTHORITY", b"").decode()}
    return None


def list_windows():
    """In a process of its own: the X library ends the process when the server ends. None: there is no session."""
    environment = display_of_the_session()
    if not environment:
        return None
    reader, writer = os.pipe()
    child = os.fork()
    if child == 0:
        try:
            os.environ.update(environment)
            os.write(writer, json.dumps(Windows().list()).encode())
        finally:
            os._exit(0)
    os.close(writer)
    with os.fdopen(reader, "rb") as answer:
        text = answer.read()
    os.waitpid(child, 0)
    return json.loads(text) if text else None


def run_command(request):
    try:
        done = subprocess.run(["bash", "-c", request["run"]], input=base64.b64decode(request.get("input", "")),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=request["seconds"], check=False)
        return {"status": done.returncode, "output": base64.b64encode(done.stdout).decode()}
    except subprocess.TimeoutExpired:
        return {"status": 124, "output": ""}


def answer_to(request, fingers):
    if "run" in request:
        return run_command(request)
    if "touch" in request:
        fingers.play(request["touch"])
        return {}
    return {"windows": list_windows()}


def read_line(port, kept):
    while b"\n" not in kept:
        part = os.read(port, 65536)
        if not part:  # the emulator's side is closed
            time.sleep(0.1)
        kept += part
    line, rest = kept.split(b"\n", 1)
    return line, rest


def write_all(port, data):
    while data:
        data = data[os.write(port, data):]


def main():
    fingers = Fingers()
    with open("/dev/virtio-ports/try.journal", "wb") as journal:
        subprocess.Popen(["journalctl", "--boot", "--follow", "--lines=all", "--output=short-unix", "--no-hostname"],
                         stdout=journal)
    port = os.open("/dev/virtio-ports/try.agent", os.O_RDWR)
    kept = b""
    while True:
        line, kept = read_line(port, kept)
        try:
            request = json.loads(line)
            answer = answer_to(request, fingers)
            answer["number"] = request["number"]
        except (ValueError, KeyError) as error:
            print(f"no request: {line[:200]!r}: {error}", file=sys.stderr)
            continue
        write_all(port, json.dumps(answer).encode() + b"\n")


main()
