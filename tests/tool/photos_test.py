"""What becomes of whole photos, their metadata and their formats: photos_test.py TOOL ENGINE"""
import json
import random
import struct
import subprocess
import unittest
from pathlib import Path

from tool_case import ToolCase
from tool_test import segments, tag, with_segments

XMP = b"http://ns.adobe.com/xap/1.0/\0"


def long_tag(number, kind, count, at):
    return struct.pack("<HHII", number, kind, count, at)


def rich_exif():
    """First directory, Exif with a Canon maker note that has offsets of its own, GPS, thumbnail; and entries of no
    type in each."""
    maker_at, gps_at, first_at, exif_at = 300, 420, 8, 140
    none = tag(0xeeee, 0, 0, 0)
    block = bytearray(600)
    def put(at, *parts):
        data = b"".join(parts)
        block[at:at + len(data)] = data
    put(0, b"II*\0", struct.pack("<I", first_at))
    put(first_at, struct.pack("<H", 7), none, long_tag(0x10f, 2, 6, 110), long_tag(0x110, 2, 10, 116),
        tag(0x112, 3, 6), none, tag(0x8769, 4, exif_at), tag(0x8825, 4, gps_at), struct.pack("<I", 500))
    put(110, b"Canon\0", b"Canon TX1\0")
    put(exif_at, struct.pack("<H", 5), none, long_tag(0x9003, 2, 20, 230), long_tag(0x927c, 7, 80, maker_at),
        tag(0xa002, 4, 640), tag(0xa003, 4, 480), bytes(4))
    put(230, b"2024:05:06 07:08:09\0")
    put(maker_at, struct.pack("<H", 2), long_tag(6, 2, 12, maker_at + 50), long_tag(9, 2, 8, maker_at + 62), bytes(4))
    put(maker_at + 50, b"IMG:TX1 JPEG", b"Somebody")
    put(gps_at, struct.pack("<H", 3), tag(1, 2, ord("N"), 2), none, long_tag(2, 5, 3, 462), bytes(4))
    put(462, struct.pack("<6I", 48, 1, 8, 1, 15, 1))
    put(500, struct.pack("<H", 3), tag(0x103, 3, 6), tag(0x201, 4, 560), tag(0x202, 4, 40), bytes(4))
    put(560, b"\xff\xd8\xff\xfe\0\x07THUMB", bytes(27), b"\xff\xd9")
    return b"Exif\0\0" + bytes(block)


def resource(number, data):
    return b"8BIM" + struct.pack(">HHI", number, 0, len(data)) + data + bytes(len(data) % 2)


def xmp(attributes, body=b""):
    return (XMP + b'<?xpacket begin="" id="W5M0MpCehiHzreSzNTczkc9d"?><x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF '
            b'xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description rdf:about="" ' + attributes +
            b'>' + body + b'</rdf:Description></rdf:RDF></x:xmpmeta>' + b" " * 200 + b'<?xpacket end="w"?>')


class PhotosTest(ToolCase):
    def setUp(self):
        super().setUp()
        Path("raw").write_bytes(random.Random(1).randbytes(64 * 48 * 3 // 2))
        self.run_tool("convert", "--size=64x48", "--from=nv21", "--to=jpg", "raw", "photo.jpg")
        self.photo = Path("photo.jpg").read_bytes()

    def tags(self, file):
        """What exiftool reads, but for what describes the file itself."""
        text = subprocess.run(["exiftool", "-j", "-G1", "-a", "-u", "-U", file], check=True, capture_output=True).stdout
        return {name: value for name, value in json.loads(text)[0].items()
                if name.split(":")[0] not in ("SourceFile", "System", "File", "ExifTool", "Composite")}

    def test_segments_of_every_kind_are_kept(self):
        iptc = b"\x1c\2\x05\0\5title\x1c\2\x19\0\3cat"
        rest = [
            (0xe1, xmp(b'xmlns:t="http://ns.adobe.com/tiff/1.0/" t:Orientation="6" t:Software="pencil" '
                       b'xmlns:own="http://example.com/own/" own:note="a &lt; b"')),
            (0xe1, b"http://ns.adobe.com/xmp/extension/\0" + b"0" * 32 + struct.pack(">II", 4, 0) + b"<a/>"),
            (0xe1, b"FLIR\0\1\0\0" + bytes(80)), (0xe2, b"FPXR\0\0\1\0\1" + bytes(40)), (0xe5, b"RMETA\0" + bytes(20)),
            (0xea, b"AROT\0\0" + bytes(8)), (0xec, b"Ducky\0\1\0\4\0\0\0P\0\0"), (0xef, b"unheard of"),
            (0xed, b"Photoshop 3.0\0" + resource(0x404, iptc) + resource(0x40a, b"\1") + resource(0x40b, b"http://x.org")
             + resource(0x40c, bytes(28) + b"\xff\xd8PSTHUMB")),
            (0xed, b"Photoshop 3.0\0" + resource(0x404, b"\x1c\2\x19\0\3dog")), (0xfe, b"a comment")]
        Path("rich.jpg").write_bytes(with_segments(self.photo, (0xe1, rich_exif()), *rest))
        before = self.tags("rich.jpg")
        plainer = with_segments(self.photo, (0xe1, rich_exif().replace(tag(0xeeee, 0, 0, 0), tag(0xeeee, 3, 0, 1))), *rest)
        Path("sound.jpg").write_bytes(plainer)
        sound = self.tags("sound.jpg")
        self.assertEqual(sound["Canon:CanonImageType"], "IMG:TX1 JPEG")
        self.assertIn("GPS:GPSLatitude", sound)
        for command in (["apply", "sepia"], ["resize", "--size=30x20"]):
            self.run_tool(*command, "rich.jpg", "made.jpg")
            made, after = Path("made.jpg").read_bytes(), self.tags("made.jpg")
            for name, value in (sound | before).items():
                if name.startswith("IFD1:") or "Thumbnail" in name or "0xeeee" in name.lower():
                    self.assertNotIn(name, after)
                elif not any(word in name for word in ("Orientation", "ExifImage")):
                    self.assertEqual(after.get(name), value, (command, name))
            self.assertEqual((after["IFD0:Orientation"], after["XMP-tiff:Orientation"]), ("Horizontal (normal)",) * 2)
            self.assertFalse(b"THUMB" in made or b"PSTHUMB" in made)
            kept = [body for _, body in segments(made)]
            for _, body in rest[1:8] + rest[10:]:
                self.assertIn(body, kept)


if __name__ == "__main__":
    unittest.main()
