"""What becomes of whole photos, their metadata and their formats: photos_test.py TOOL ENGINE"""
import json
import os
import random
import re
import struct
import subprocess
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase
from tool_test import exif, segments, tag, with_segments

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

    def test_damaged_photos_are_refused_or_kept_by_the_users_word(self):
        Path("argb").write_bytes(random.Random(2).randbytes(4 * 320 * 240))
        self.run_tool("convert", "--size=320x240", "--from=argb", "--to=jpg", "--quality=50", "argb", "whole.jpg")
        whole = Path("whole.jpg").read_bytes()
        middle = bytearray(whole)
        middle[len(whole) // 2:len(whole) // 2 + 400] = random.Random(3).randbytes(400)
        for name, content, says in (("cut.jpg", whole[:len(whole) // 2], r"1\d\d of 240 rows .*ends early"),
                                    ("middle.jpg", middle, ".* 240 rows")):
            Path(name).write_bytes(content)
            self.run_tool("resize", "--size=30x20", name, "none.jpg", code=3, says=f"{name}: damaged: {says}.*--damaged keep")
            self.assertFalse(Path("none.jpg").exists())
            self.run_tool("resize", "--size=30x20", name, "kept.jpg", "--damaged=keep", says=f"note: {name}: damaged: {says}")
            self.assertTrue(Path("kept.jpg").stat().st_size > 0)
            os.link(name, "same.jpg")
            for output in (name, "same.jpg"):
                self.run_tool("resize", "--size=30x20", name, output, "--damaged=keep", code=3, says=".*\n.*never replaced")
            os.remove("same.jpg")
            self.assertEqual(Path(name).read_bytes(), bytes(content))
        padded = whole[:-2] + bytes(20)  # what costs no pixel is no damage
        Path("padded.jpg").write_bytes(padded)
        self.run_tool("resize", "--size=30x20", "padded.jpg", "made.jpg")

    def test_each_refused_file_has_its_own_sentence(self):
        frame = self.photo.index(b"\xff\xc0")
        def patched(at, content):
            return self.photo[:frame + at] + content + self.photo[frame + at + len(content):]
        for content, says in (
                (b"", "empty"), (b"hello", "x: not a JPEG, PNG"), (b"GIF89a" + bytes(20), "a GIF"), (b"BM" + bytes(20), "a BMP"),
                (bytes(4) + b"ftypisom" + bytes(20), "a video"), (patched(4, b"\x0c"), "12 bits a sample"),
                (patched(5, b"\xff" * 4), "65535x65535 pixels; at most 65535"), (patched(1, b"\xc3"), "lossless"),
                (patched(1, b"\xc5"), "hierarchical"), (self.photo[:frame], "no part of the picture")):
            Path("x").write_bytes(content)
            self.run_tool("resize", "--size=30x20", "x", "none.jpg", code=3, says=f"x: .*{says}" if "x:" not in says else says)
            self.assertFalse(Path("none.jpg").exists())
        self.run_tool("resize", "--size=30x20", "photo.jpg", "none.heic", code=2, says="HEIC files are only read")

    def test_quality_and_sampling_follow_the_input_or_the_option(self):
        def coding(file):
            segment = next(body for marker, body in segments(Path(file).read_bytes()) if marker == 0xc0)
            tables = b"".join(body for marker, body in segments(Path(file).read_bytes()) if marker == 0xdb)
            return {0x11: "444", 0x21: "422", 0x22: "420"}[segment[7]], tables
        for sampling in ("444", "422", "420"):
            self.run_tool("convert", "--size=64x48", "--from=nv21", "--to=jpg", "--quality=71", "raw", "in.jpg", f"--sampling={sampling}")
            self.run_tool("resize", "--size=30x20", "in.jpg", "made.jpg", "--quality=same")
            self.assertEqual(coding("made.jpg"), coding("in.jpg"))
            self.assertEqual(coding("made.jpg")[0], sampling)
        cameras = bytearray(Path("in.jpg").read_bytes())  # tables of its own, one for each of the three
        for at in (place.start() for place in re.finditer(rb"\xff\xdb", cameras)):
            cameras[at + 5:at + 69] = bytes((cameras[at + 5 + i] + i) // 2 + 1 for i in range(64))
        chroma, frame = cameras.rindex(b"\xff\xdb"), cameras.index(b"\xff\xc0")
        cameras[frame + 18] = 2
        cameras[chroma + 69:chroma + 69] = cameras[chroma:chroma + 4] + b"\2" + bytes(range(3, 67))
        Path("in.jpg").write_bytes(cameras)
        for command in (["resize", "--size=30x20"], ["apply", "sepia"]):
            self.run_tool(*command, "in.jpg", "made.jpg", "--quality=same")
            self.assertEqual(coding("made.jpg"), coding("in.jpg"))
        self.run_tool("resize", "--size=30x20", "in.jpg", "made.jpg", "--sampling=444")
        self.assertEqual(coding("made.jpg")[0], "444")
        self.assertNotEqual(coding("made.jpg")[1], coding("in.jpg")[1])
        for option in ("--quality=101", "--quality=sam", "--sampling=411", "--damaged=no"):
            self.run_tool("resize", "--size=30x20", "in.jpg", "none.jpg", option, code=2, says=option[:6])

    def profile(self, name):
        """One that libvips has built in."""
        subprocess.run(["vips", "icc_transform", "photo.jpg", "profiled.jpg", name], check=True)
        return subprocess.run(["exiftool", "-b", "-icc_profile", "profiled.jpg"], check=True, capture_output=True).stdout

    def pixels(self, file):
        self.run_tool("convert", "--from=jpg", "--to=argb", file, "argb")
        return Path("argb").read_bytes()

    def test_formats_come_and_go_by_their_endings(self):
        block = rich_exif().replace(tag(0xeeee, 0, 0, 0), tag(0xeeee, 3, 0, 1))
        note = xmp(b'xmlns:own="http://example.com/own/" own:note="kept"')
        profile = self.profile("p3")
        iptc = b"Photoshop 3.0\0" + resource(0x404, b"\x1c\2\x19\0\3cat")
        Path("rich.jpg").write_bytes(with_segments(self.photo, (0xe1, block), (0xe1, note), (0xfe, b"remark"), (0xed, iptc),
                                                   (0xe2, b"ICC_PROFILE\0\1\1" + profile)))
        self.run_tool("blend", "rich.jpg", "rich.jpg", "upright.jpg", "--quality=100", "--sampling=444")
        wanted, exact = self.tags("upright.jpg"), self.pixels("upright.jpg")
        for ending, kept, says in (("png", ("IFD0", "ExifIFD", "GPS", "Canon", "XMP-own", "ICC-header"), "no place for its IPTC"),
                                   ("webp", ("IFD0", "ExifIFD", "GPS", "Canon", "XMP-own", "ICC-header"), "comment, IPTC"),
                                   ("tif", ("IFD0", "ExifIFD", "GPS", "Canon", "XMP-own", "ICC-header", "IPTC"), "no place for its comment")):
            self.run_tool("blend", "rich.jpg", "rich.jpg", f"made.{ending}", says=says)
            found = {name.replace("IPTC2", "IPTC"): value for name, value in self.tags(f"made.{ending}").items()}
            for name, value in wanted.items():
                if name.split(":")[0] in kept:
                    self.assertEqual(found.get(name), value, (ending, name))
            back = self.pixels(f"made.{ending}")
            self.assertEqual(len(back), len(exact))
            if ending != "webp":
                self.assertLessEqual(max(abs(a - b) for a, b in zip(back, exact)), 12, ending)  # the JPEG's loss
            self.run_tool("apply", "negative", f"made.{ending}", "back.jpg")
            found = self.tags("back.jpg")
            self.assertTrue(all(found.get(name) == value for name, value in wanted.items() if name.split(":")[0] in kept))
        for ending in ("heic", "avif"):
            subprocess.run(["vips", "copy", "rich.jpg", f"in.{ending}[Q=95]"], check=True)
            self.run_tool("apply", "negative", f"in.{ending}", "made.png")
            self.assertEqual(self.tags("made.png")["PNG:ImageWidth"], 64)  # Exif does not turn these
            self.assertEqual(self.tags("made.png")["IFD0:Orientation"], "Horizontal (normal)")
        os.makedirs("in")
        for name in ("made.png", "made.tif", "in.heic", "rich.jpg"):
            os.link(name, f"in/{name}")
        self.run_tool("apply", "sepia", "in", "out")
        self.assertEqual(sorted(os.listdir("out")), ["in.jpg", "made.png", "made.tif", "rich.jpg"])

    def test_tiffs_own_tags_become_exif(self):
        def directory(at, *entries):
            """Entries of type, count and value of a file of big-endian numbers, their values behind them."""
            head, values = struct.pack(">H", len(entries)), b""
            for number, kind, count, value in entries:
                place = at + 2 + 12 * len(entries) + 4 + len(values)
                head += struct.pack(">HHI", number, kind, count) + (value.ljust(4, b"\0") if len(value) <= 4 else struct.pack(">I", place))
                values += value + bytes(len(value) % 2) if len(value) > 4 else b""
            return head + bytes(4) + values
        short, long = (lambda v: struct.pack(">H", v)), (lambda v: struct.pack(">I", v))
        pixels = bytes((200, 100, 50)) * (256 * 100)
        canon = lambda at: directory(at, (6, 2, 12, b"IMG:TX1 JPEG"), (9, 2, 8, b"Somebody"))
        for maker, kept, says in ((canon, {"Canon:CanonImageType": "IMG:TX1 JPEG", "Canon:OwnerName": "Somebody"}, ""),
                                  (lambda at: b"Apple iOS\0" + bytes(20), {}, ""),
                                  (lambda at: b"unheard of", {}, "maker note is left out")):
            gps = 8 + len(pixels)
            exif_at = gps + len(part := directory(gps, (1, 2, 2, b"N\0"), (2, 5, 3, struct.pack(">6I", 48, 1, 8, 1, 15, 1))))
            maker_at = exif_at + 2 + 2 * 12 + 4 + 20
            part += directory(exif_at, (0x9003, 2, 20, b"2024:05:06 07:08:09\0"), (0x927c, 7, len(maker(maker_at)), maker(maker_at)))
            first = gps + len(part)
            part += directory(first, (256, 3, 1, short(256)), (257, 3, 1, short(100)), (258, 3, 3, short(8) * 3), (259, 3, 1, short(1)),
                              (262, 3, 1, short(2)), (0x10f, 2, 6, b"Canon\0"), (0x110, 2, 10, b"Canon TX1\0"), (273, 4, 1, long(8)),
                              (0x112, 3, 1, short(6)), (277, 3, 1, short(3)), (278, 3, 1, short(100)), (279, 4, 1, long(len(pixels))),
                              (0x8769, 4, 1, long(exif_at)), (0x8825, 4, 1, long(gps)))
            Path("in.tif").write_bytes(b"MM\0*" + long(first) + pixels + part)
            wanted = self.tags("in.tif")
            self.assertTrue(wanted.items() >= kept.items())
            self.run_tool("apply", "sepia", "in.tif", "out.jpg", says=says)
            self.run_tool("resize", "--size=100%", "out.jpg", "again.tif")
            for file in ("out.jpg", "again.tif"):
                found = self.tags(file)
                for name in ("IFD0:Make", "IFD0:Model", "ExifIFD:DateTimeOriginal", "GPS:GPSLatitudeRef", "GPS:GPSLatitude", *kept):
                    self.assertEqual(found[name], wanted[name], file)
                self.assertEqual(found["IFD0:Orientation"], "Horizontal (normal)")
                self.assertEqual("Apple iOS" in maker(0).decode("latin1"), b"Apple iOS" in Path(file).read_bytes())
            self.assertEqual((found["IFD0:ImageWidth"], found["IFD0:ImageHeight"]), (100, 256))
            self.assertEqual(self.pixels("again.tif"), self.pixels("out.jpg"))

    def hdr_motion_photo(self, orientation):
        """A photo with a gain map of 16 x 12 pixels and a video behind it, an index and claims in XMP."""
        Path("argb").write_bytes(random.Random(4).randbytes(4 * 16 * 12))
        self.run_tool("convert", "--size=16x12", "--from=argb", "--to=jpg", "argb", "map.jpg")
        gain_map = with_segments(Path("map.jpg").read_bytes(), (0xe1, xmp(b'xmlns:hdrgm="http://ns.adobe.com/hdr-gain-map/1.0/" hdrgm:Version="1.0" hdrgm:GainMapMax="3"')))
        video = b"\0\0\0\x18ftypmp42" + bytes(300)
        def item(mime, semantic, length):
            return (b'<rdf:li rdf:parseType="Resource"><Container:Item Item:Mime="%s" Item:Semantic="%s" Item:Length="%d"/></rdf:li>'
                    % (mime, semantic, length))
        packet = xmp(b'xmlns:hdrgm="http://ns.adobe.com/hdr-gain-map/1.0/" hdrgm:Version="1.0" '
                     b'xmlns:GCamera="http://ns.google.com/photos/1.0/camera/" GCamera:MotionPhoto="1" '
                     b'xmlns:OpCamera="http://ns.oplus.com/photos/1.0/camera/" OpCamera:OLivePhotoVersion="2" OpCamera:VideoLength="324" '
                     b'xmlns:VCamera="http://ns.vivo.com/photos/1.0/camera/" VCamera:VMotionPhotoVersion="1" '
                     b'xmlns:Container="http://ns.google.com/photos/1.0/container/" xmlns:Item="http://ns.google.com/photos/1.0/container/item/"',
                     b'<Container:Directory><rdf:Seq>' + item(b"image/jpeg", b"Primary", 0) + item(b"image/jpeg", b"GainMap", len(gain_map))
                     + item(b"video/mp4", b"MotionPhoto", len(video)) + b'</rdf:Seq></Container:Directory>')
        def index(first, place):
            return (b"MPF\0MM\0*" + struct.pack(">IH", 8, 3) + struct.pack(">HHI4s", 0xb000, 7, 4, b"0100")
                    + struct.pack(">HHII", 0xb001, 4, 1, 2) + struct.pack(">HHII", 0xb002, 7, 32, 50) + bytes(4)
                    + struct.pack(">IIIHH", 0x030000, first, 0, 0, 0) + struct.pack(">IIIHH", 0, len(gain_map), place, 0, 0))
        head = [(0xe1, exif(orientation)), (0xe1, packet)]
        size = len(with_segments(self.photo, *head, (0xe2, index(0, 0))))
        origin = 2 + sum(len(body) + 4 for _, body in head) + 8
        return with_segments(self.photo, *head, (0xe2, index(size, size - origin))) + gain_map + video, gain_map, video

    def test_gain_maps_and_videos_follow_their_photo(self):
        def second(file):
            return subprocess.run(["exiftool", "-b", "-MPImage2", file], check=True, capture_output=True).stdout
        for orientation, size in ((1, (16, 12)), (6, (12, 16))):
            content, gain_map, video = self.hdr_motion_photo(orientation)
            Path("hdr.jpg").write_bytes(content)
            self.assertEqual(second("hdr.jpg"), gain_map)
            self.run_tool("apply", "sepia", "hdr.jpg", "made.jpg")
            made, found, tags = Path("made.jpg").read_bytes(), second("made.jpg"), self.tags("made.jpg")
            self.assertTrue(made.endswith(found + video))
            self.assertEqual(found == gain_map, orientation == 1)
            Path("found.jpg").write_bytes(found)
            self.run_tool("resize", "--size=100%", "found.jpg", "found.png")
            self.assertEqual(struct.unpack(">II", Path("found.png").read_bytes()[16:24]), size)
            self.assertEqual(self.tags("found.jpg")["XMP-hdrgm:GainMapMax"], 3)
            self.assertEqual(re.findall(rb'Item:Length="(\d+)"', made), [b"%d" % size for size in (0, len(found), len(video))])
            self.assertEqual((tags["MPF0:NumberOfImages"], tags["XMP-GCamera:MotionPhoto"]), (2, 1))
        self.run_tool("resize", "--size=24x24", "--crop", "hdr.jpg", "made.jpg")
        Path("found.jpg").write_bytes(second("made.jpg"))
        self.run_tool("resize", "--size=100%", "found.jpg", "found.png")
        self.assertEqual(struct.unpack(">II", Path("found.png").read_bytes()[16:24]), (12, 12))
        self.run_tool("apply", "fish-eye", "hdr.jpg", "made.jpg", says="gain map .*moved")
        made = Path("made.jpg").read_bytes()
        self.assertTrue(made.endswith(b"\xff\xd9" + video) and b"MPF\0" not in made and b"hdr-gain-map/1.0/\" hdrgm:" not in made)
        self.assertEqual(re.findall(rb'Item:Semantic="(\w+)"', made), [b"Primary", b"MotionPhoto"])
        for output, options, says in (("made.jpg", ["--plain"], ""), ("made.png", [], "no place for its gain map")):
            self.run_tool("apply", "sepia", "hdr.jpg", output, *options, says=says)
            self.assertFalse(video in Path(output).read_bytes())
            self.assertFalse([name for name in self.tags(output) if re.search("MPF|hdrgm|GCamera|Container", name)])
            self.assertFalse(re.search(rb'OpCamera:\w|VCamera:V', Path(output).read_bytes()))

    def test_colours_go_by_their_profiles(self):
        p3 = self.profile("p3")
        def colour(*command):
            self.run_tool(*command, "made.png")
            self.run_tool("convert", "--from=jpg", "--to=argb", "made.png", "argb")
            return tuple(Path("argb").read_bytes()[2::-1]), b"iCCP" in Path("made.png").read_bytes()
        Path("argb").write_bytes(bytes((80, 90, 200, 255)) * (64 * 48))
        self.run_tool("convert", "--size=64x48", "--from=argb", "--to=jpg", "--quality=100", "--sampling=444", "argb", "plain.jpg")
        Path("wide.jpg").write_bytes(with_segments(Path("plain.jpg").read_bytes(), (0xe2, b"ICC_PROFILE\0\1\1" + p3)))
        raw, _ = colour("resize", "--size=8x8", "plain.jpg")
        self.assertEqual(colour("resize", "--size=8x8", "wide.jpg"), (raw, True))
        (red, green, blue), profiled = colour("resize", "--size=8x8", "--to-srgb", "wide.jpg")
        self.assertTrue(red > raw[0] + 8 and green < raw[1] and not profiled, (red, green, blue))
        self.assertEqual(colour("blend", "plain.jpg", "wide.jpg", "--weight=0"), ((red, green, blue), False))
        mixed, profiled = colour("blend", "wide.jpg", "plain.jpg", "--weight=0")
        self.assertTrue(mixed[0] < raw[0] - 5 and profiled, mixed)
        self.run_tool("gallery", "wide.jpg", "page")
        for file in ("Original", "sepia", "small/PrettyBlue"):
            self.assertIn(p3[:60], Path(f"page/pictures/{file}.jpg").read_bytes())
        Path("wide.jpg").write_bytes(with_segments(Path("plain.jpg").read_bytes(), (0xe2, b"ICC_PROFILE\0\1\1" + p3[:128] + bytes(len(p3) - 128))))
        self.run_tool("resize", "--size=8x8", "--to-srgb", "wide.jpg", "none.jpg", code=3, says="profile can't be used")

    def test_exif_whose_directories_overlap(self):
        """So that what is changed in one takes away the entries of the first."""
        invalid = (b"MM\0*" + struct.pack(">IHHHII", 8, 1, 0x8769, 4, 1, 9) + bytes(12 * 0x186 - 11)
                   + struct.pack(">HHII", 0x9003, 3, 1, 5))  # one at 9, of 0x187 entries
        colours = (b"MM\0*" + struct.pack(">I", 62) + bytes(32) + struct.pack(">HHHII", 2, 0x9003, 3, 1, 0)
                   + struct.pack(">HHI", 0xa001, 4, 1) + struct.pack(">HHHII", 1, 0x8769, 4, 1, 40))
        profile = (0xe2, b"ICC_PROFILE\0\1\1" + self.profile("p3"))
        for block, says in ((invalid, "Exif is left out: damaged"), (colours, "")):
            Path("in.jpg").write_bytes(with_segments(self.photo, (0xe1, b"Exif\0\0" + block), profile))
            self.run_tool("apply", "sepia", "--to-srgb", "in.jpg", "made.jpg", says=says)

    def test_inks_and_greys_become_srgb(self):
        """By lcms2's own way, and as ideal inks without a profile; by bands as in one piece."""
        def worst(file, expected, says=""):
            self.run_tool("resize", "--size=100%", file, "made.png", says=says)
            self.assertFalse(b"iCCP" in Path("made.png").read_bytes())
            return max(abs(a - b) for a, b in zip(self.pixels("made.png"), expected))
        Path("argb").write_bytes(bytes(v for y in range(240) for x in range(320) for v in (x * 4 // 5, y, 255 - (x + y) // 3, 255)))
        self.run_tool("convert", "--size=320x240", "--from=argb", "--to=jpg", "argb", "in.jpg")
        vips = lambda *command: subprocess.run(["vips", *command], check=True)
        vips("icc_transform", "in.jpg", "inks.jpg[Q=95]", "cmyk")
        vips("icc_transform", "inks.jpg", "wanted.png[strip]", "srgb", "--embedded", "--intent=relative", "--black-point-compensation")
        vips("copy", "inks.jpg", "inks.tif")
        vips("copy", "inks.jpg", "plain.jpg[strip,Q=95]")
        wanted = self.pixels("wanted.png")
        for file, least, most, says in (("inks.jpg", 0, 2, "by its profile"), ("inks.tif", 0, 2, "by its profile"),
                                        ("plain.jpg", 20, 255, "without a profile: as ideal inks")):
            self.assertTrue(least <= worst(file, wanted, says) <= most, file)
        for file in ("inks.jpg", "plain.jpg"):
            for effect in ("sepia", "PrettySweet", "sketch"):
                self.run_tool("apply", effect, file, "bands.jpg", says="CMYK")
                with open(file, "rb") as photo:
                    whole = subprocess.run([TOOL, "apply", effect, "-", "-"], stdin=photo, capture_output=True, check=True)
                self.assertEqual(whole.stdout, Path("bands.jpg").read_bytes(), (file, effect))
        # A tone curve of gamma 1 in a grey photo's profile.
        tags = ((b"wtpt", b"XYZ \0\0\0\0" + struct.pack(">iii", 63190, 65536, 54061)), (b"kTRC", b"curv\0\0\0\0\0\0\0\0"))
        profile = struct.pack(">I4sI4s4s4s", 0, b"lcms", 0x2000000, b"mntr", b"GRAY", b"XYZ ") + bytes(12) + b"acsp"
        profile += bytes(68 - len(profile)) + struct.pack(">iii", 63190, 65536, 54061)
        profile += bytes(128 - len(profile)) + struct.pack(">I4sII4sII", 2, tags[0][0], 156, 20, tags[1][0], 176, 12)
        profile += tags[0][1] + tags[1][1] + random.Random(6).randbytes(100)  # libpng takes no shorter ones
        profile = struct.pack(">I", len(profile)) + profile[4:]
        vips("colourspace", "in.jpg", "grey.jpg[strip]", "b-w")
        light = [v / 255 for v in self.pixels("grey.jpg")]
        wanted = [255 * (12.92 * v if v < 0.0031308 else 1.055 * v ** (1 / 2.4) - 0.055) for v in light]
        Path("grey.jpg").write_bytes(with_segments(Path("grey.jpg").read_bytes(), (0xe2, b"ICC_PROFILE\0\1\1" + profile)))
        for ending in ("jpg", "png", "tif"):
            if ending != "jpg":
                vips("copy", "grey.jpg", f"grey.{ending}")
            self.assertLess(worst(f"grey.{ending}", wanted), 1.5, ending)

    def test_resizing_keeps_shapes_and_does_not_alias(self):
        def size(*options, of="photo.jpg", code=0, says=""):
            self.run_tool("resize", of, "made.png", *options, code=code, says=says)
            return code or struct.unpack(">II", Path("made.png").read_bytes()[16:24])
        Path("side.jpg").write_bytes(with_segments(self.photo, (0xe1, exif(6))))
        for options, wide, tall in (
                ("32", (32, 24), (24, 32)), ("32x", (32, 24), (32, 43)), ("x12", (16, 12), (9, 12)), ("50%", (32, 24), (24, 32)),
                ("12.5%", (8, 6), (6, 8)), ("30x30", (30, 30), (30, 30)), ("30x30 --fit", (30, 23), (23, 30)),
                ("30x10 --crop", (30, 10), (30, 10)), ("128", (128, 96), (96, 128)), ("1x1", (1, 1), (1, 1)),
                ("30x20 --filter=bilinear", (30, 20), (30, 20)), ("4", (4, 3), (3, 4))):
            for photo, expected in (("photo.jpg", wide), ("side.jpg", tall)):
                self.assertEqual(size("--size", *options.split(), of=photo), expected, (options, photo))
        for options, says in (("0", "expected WIDTHxHEIGHT"), ("x", "expected"), ("-5%", "expected"), ("nan%", "expected"), ("4x4x", "expected"),
                              ("70000", "65500"), ("5 --fit --crop", "excludes"), ("5x5 --crop --filter=bilinear", "does not crop"),
                              ("200000%", "expected"), ("10000% --filter=none", "filter")):
            size("--size", *options.split(), code=2, says=says)
        # One-pixel stripes are grey from afar; in colour, and where the decoder has not reduced them.
        Path("argb").write_bytes((bytes((0, 0, 255, 255)) + bytes((255, 255, 0, 255))) * (160 * 240))
        self.run_tool("convert", "--size=320x240", "--from=argb", "--to=jpg", "--quality=100", "--sampling=444", "argb", "stripes.jpg")
        self.run_tool("resize", "stripes.jpg", "made.jpg", "--size=97x71", "--quality=100", "--sampling=444")
        self.run_tool("resize", "made.jpg", "made.png", "--size=96x70")
        self.run_tool("convert", "--from=jpg", "--to=argb", "made.png", "argb")
        pixels = Path("argb").read_bytes()
        inner = [pixels[4 * (96 * y + x) + c] for y in range(8, 62) for x in range(8, 88) for c in range(3)]
        self.assertLess(max(abs(v - 127.5) for v in inner), 12)
        self.flat("flat.jpg", 200)
        self.run_tool("resize", "flat.jpg", "made.png", "--size=36x92")
        self.run_tool("convert", "--from=jpg", "--to=argb", "made.png", "argb")
        self.assertEqual(set(Path("argb").read_bytes()), {200, 255})

    def flat(self, name, level):
        Path("argb").write_bytes(bytes((level, level, level, 255)) * (64 * 48))
        self.run_tool("convert", "--size=64x48", "--from=argb", "--to=jpg", "--quality=100", "argb", name)

    def test_pictures_beyond_a_jpegs_means(self):
        import zlib
        def png(depth, colour, rows, *chunks):
            data = zlib.compress(b"".join(b"\0" + row for row in rows))
            parts = ((b"IHDR", struct.pack(">IIBBBBB", 2, len(rows), depth, colour, 0, 0, 0)), *chunks, (b"IDAT", data), (b"IEND", b""))
            return b"\x89PNG\r\n\x1a\n" + b"".join(struct.pack(">I", len(d)) + k + d + struct.pack(">I", zlib.crc32(k + d)) for k, d in parts)
        rows = [bytes((10, 20, 30, 255, 10, 20, 30, 0)), bytes((0, 0, 0, 128, 255, 0, 0, 255))]
        for content, expected, says in (
                (png(8, 6, rows), (30, 20, 10, 255, 255, 255, 255, 255, 127, 127, 127, 255, 0, 0, 255, 255), "over white"),
                (png(16, 0, [bytes((1, 2, 250, 255))] * 2), (1, 1, 1, 255, 250, 250, 250, 255) * 2, "16 bits"),
                (png(8, 2, [bytes(range(1, 7))] * 2, (b"tEXt", b"Author\0Jos\xe9"), (b"iTXt", b"Title\0\0\0\0\0\xc5\x81"), (b"tEXt", b"Software\0x")),
                 (3, 2, 1, 255, 6, 5, 4, 255) * 2, ""),
                (png(1, 3, [b"\x40"] * 2, (b"PLTE", bytes((1, 2, 3, 4, 5, 6)))), (3, 2, 1, 255, 6, 5, 4, 255) * 2, "")):
            Path("in.png").write_bytes(content)
            self.run_tool("convert", "--from=jpg", "--to=argb", "in.png", "argb", says=says)
            self.assertEqual(Path("argb").read_bytes(), bytes(expected))
            if b"Author" in content:
                self.run_tool("apply", "sepia", "in.png", "made.png")
                kept = self.tags("made.png")
                self.assertEqual([kept[f"PNG:{name}"] for name in ("Author", "Title", "Software")], ["Jos\xe9", "\u0141", "x"])
                self.run_tool("apply", "sepia", "in.png", "made.jpg", says="no place for its Author, Title\n")
        for colour, row, gamma, profiled in ((2, bytes((0, 55, 55)) * 2, 100000, True), (0, bytes((55, 55)), 100000, False),
                                             (2, bytes((0, 55, 55)) * 2, 45455, False)):
            Path("in.png").write_bytes(png(8, colour, [row] * 2, (b"gAMA", struct.pack(">I", gamma))))
            self.run_tool("resize", "--size=100%", "--to-srgb", "in.png", "made.png")
            self.assertLessEqual(abs(self.pixels("made.png")[0] - (128 if gamma == 100000 else 55)), 1)
            self.run_tool("resize", "--size=100%", "in.png", "made.png")
            self.assertEqual(b"iCCP" in Path("made.png").read_bytes(), profiled)
        Path("in.png").write_bytes(png(8, 6, rows)[:-20])
        self.run_tool("convert", "--from=jpg", "--to=argb", "in.png", "none", code=3, says="in.png: damaged")
        for ending, says in (("webp", "unable to parse"), ("tif", "the file ends early"), ("heic", "the file ends early")):
            subprocess.run(["vips", "copy", "photo.jpg", f"made.{ending}"], check=True)
            Path(f"cut.{ending}").write_bytes(Path(f"made.{ending}").read_bytes()[:200])
            self.run_tool("convert", "--from=jpg", "--to=argb", f"cut.{ending}", "none", code=3, says=f"cut.{ending}: damaged.*{says}")
        pages = bytearray(Path("made.tif").read_bytes())  # a second one, which is the first again
        first = struct.unpack_from("<I", pages, 4)[0]
        pages += bytes(len(pages) % 2)
        second = pages[first:first + 2 + 12 * struct.unpack_from("<H", pages, first)[0]]
        pages[first + len(second):first + len(second) + 4] = struct.pack("<I", len(pages))
        pages += second + bytes(4)
        Path("pages.tif").write_bytes(pages)
        self.run_tool("resize", "--size=8x8", "pages.tif", "made.jpg", says="the first of its 2 pictures")
        self.run_tool("resize", "--size=8x8", "pages.tif", "pages.tif", code=3, says="never replaced")
        self.assertEqual(Path("pages.tif").read_bytes(), pages)


if __name__ == "__main__":
    unittest.main()
