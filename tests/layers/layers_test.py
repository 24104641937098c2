"""Fails when a source includes what lies above its layer, or names a store it must not know. Usage: layers_test.py SRC"""

import pathlib
import re
import sys
import unittest

SRC = pathlib.Path(sys.argv[1])
# The folder of the host is two layers: these headers are the lowest, used by everyone; the rest is the top.
WIRE = {f"host/{name}.h"
        for name in ["failure", "json", "json_writer", "process_end", "reply_channel", "request", "text_buffer"]}
# What a folder may include besides itself.
ALLOWED = {
    "wire": set(),
    "store": set(),
    # These three are one library: a zone of a file's own is made of text and of rules.
    "store/local/text": {"store", "store/local/zones", "store/local/recurrence"},
    "store/local/zones": {"store", "store/local/text", "store/local/recurrence"},
    "store/local/recurrence": {"store/local/text", "store/local/zones"},
    "store/local/editor": {"store", "store/local/text", "store/local/zones", "store/local/recurrence"},
    "store/local/files": {"store"},
    "store/local/items": {
        "store", "store/local/files", "store/local/text", "store/local/zones", "store/local/recurrence"},
    "store/local/tree": {
        "store", "store/local/files", "store/local/items", "store/local/text", "store/local/zones"},
    "store/local": {
        "store", "store/local/editor", "store/local/files", "store/local/items", "store/local/recurrence",
        "store/local/text", "store/local/tree", "store/local/zones"},
    "store/memory": {"store"},
    "store/eventkit": {"store"},
    "access": {"wire", "store"},
    "codec": {"wire", "store"},
    "events": {"wire", "store", "access", "codec"},
    # Lists are looked up and ordered as calendars are.
    "reminders": {"wire", "store", "access", "codec", "events"},
    "host": {"wire", "store", "access", "codec", "events", "reminders"},
    "simulator": {"wire", "host", "store", "store/memory", "codec"},
}
# The one place that picks a store.
COMPOSITION = "host/composition"


def layer(path):
    if path in WIRE or path.replace(".cpp", ".h") in WIRE:
        return "wire"
    return pathlib.PurePosixPath(path).parent.as_posix()


class Layers(unittest.TestCase):
    def test_every_include_points_down(self):
        sources = sorted(file for file in SRC.rglob("*") if file.suffix in {".h", ".cpp", ".mm"})
        self.assertTrue(sources)
        for source in sources:
            name = source.relative_to(SRC).as_posix()
            own = layer(name)
            with self.subTest(source=name):
                self.assertIn(own, ALLOWED, "a new folder needs its place among the layers")
                for header in re.findall(r'^#\s*(?:include|import) "([^"]+)"', source.read_text(encoding="utf-8"), re.M):
                    if not (SRC / header).exists():
                        continue  # a library's
                    if name.startswith(COMPOSITION) and layer(header).startswith("store/"):
                        continue
                    self.assertIn(layer(header), ALLOWED[own] | {own}, f"{name} includes {header}")


unittest.main(argv=[sys.argv[0]])
