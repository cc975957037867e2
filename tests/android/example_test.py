"""example_test.py JAVAC VERSION JAR...: compiles the Android example and the README's lines with the library's
jars, Android's stand-ins and example_classes.txt, and looks for what resources, manifest and build files lack."""

import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLE = HERE.parents[1] / "examples/android"
MAIN = EXAMPLE / "app/src/main"
PACKAGE = "com.orvik.camera.example"
javac, version, *jars = sys.argv[1:]


def resources() -> dict[str, set[str]]:
    """What Android's tools would make names of."""
    names = {"layout": {path.stem for path in MAIN.glob("res/layout/*.xml")}, "id": set(), "string": set()}
    for path in MAIN.glob("res/**/*.xml"):
        names["id"] |= set(re.findall(r'"@\+id/(\w+)"', path.read_text(encoding="utf-8")))
        names["string"] |= {string.get("name") for string in xml.parse(path).iter("string")}
    return names


def sources(folder: pathlib.Path) -> list[pathlib.Path]:
    """The classes of example_classes.txt and R, as files."""
    fields = "".join(f"public static final class {kind} {{ "
                     + "".join(f"public static final int {name} = 0; " for name in sorted(names)) + "}\n"
                     for kind, names in resources().items())
    text = (HERE / "example_classes.txt").read_text(encoding="utf-8")
    files = []
    for part in [*re.split(r"^(?=package )", text, flags=re.MULTILINE)[1:],
                 f"package {PACKAGE};\npublic final class R {{\n{fields}}}\n"]:
        package, name = re.search(r"package ([\w.]+);\n.*?(?:class|interface) (\w+)", part).groups()
        files.append(folder.joinpath(*package.split("."), f"{name}.java"))
        files[-1].parent.mkdir(parents=True, exist_ok=True)
        files[-1].write_text(part)
    return files


def readme(folder: pathlib.Path) -> pathlib.Path:
    """The README's lines for applications, as a class."""
    text = (HERE.parents[1] / "README.md").read_text(encoding="utf-8")
    lines = re.search(r"^## From an Android app\n.*?^```java\n(.*?)^```", text, re.MULTILINE | re.DOTALL)[1]
    file = folder / "Readme.java"
    file.write_text("import com.orvik.camera.common.Native.*; import android.graphics.Bitmap; class Readme {"
                    "void call(Bitmap bitmap, Bitmap preview, android.media.Image image, Frame frame) {"
                    f"{lines}}}}}")
    return file


def lacking(classes: pathlib.Path):
    known = resources()
    for path in MAIN.glob("**/*.xml"):
        for kind, name in re.findall(r'"@(string|id|layout)/(\w+)"', path.read_text(encoding="utf-8")):
            if name not in known[kind]:
                yield f"{path.name} names {kind} {name}"
    activity, = xml.parse(MAIN / "AndroidManifest.xml").iter("activity")
    name = activity.get("{http://schemas.android.com/apk/res/android}name")
    if not (classes / f"{PACKAGE}{name}".replace(".", "/")).with_suffix(".class").exists():
        yield f"the manifest names {name}"
    build = (EXAMPLE / "app/build.gradle.kts").read_text(encoding="utf-8")
    if f'"com.orvik.camera:algorithm:{version}"' not in build or f'namespace = "{PACKAGE}"' not in build:
        yield f"build.gradle.kts has not version {version}, or not the package {PACKAGE}"


with tempfile.TemporaryDirectory() as work:
    stubs, classes = pathlib.Path(work, "stubs"), pathlib.Path(work, "classes")
    options = [javac, "--release", "11", "-encoding", "UTF-8", "-Xlint:all", "-Werror"]
    subprocess.run([*options, "-cp", ":".join(jars), "-d", stubs, *sources(pathlib.Path(work, "sources"))], check=True)
    subprocess.run([*options, "-cp", ":".join([str(stubs), *jars]), "-d", classes,
                    *MAIN.rglob("*.java"), readme(pathlib.Path(work))], check=True)
    sys.exit("\n".join(lacking(classes)) or None)
