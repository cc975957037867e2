"""What is wrong with a repository that assemble_aar.py has written, read as its users' tools read it: from
Gradle's metadata on to the archive, and in that Java's compiler, the packager, prefab and the shrinker."""

import hashlib
import json
import pathlib
import re
import struct
import sys
import tempfile
import xml.etree.ElementTree as xml

import maven
from maven import unzipped

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
import check_library  # noqa: E402  (it lives beside the other scripts)

PACKAGE = "com.orvik.camera.common.Native"
LIBRARY, LIBRARIES = check_library.NAME, list(check_library.LIBRARIES)  # the one for native callers, and all
SOURCES = [ROOT / "java", ROOT / "android/java"]
JNI, PREFAB, NOTICE = "jni/", "prefab/", "NOTICE.txt"
METADATA = "META-INF/com/android/build/gradle/aar-metadata.properties"
HEADERS = f"{PREFAB}modules/Algorithm/include/"
NEWEST_CLASSES = 55  # Java 11
# What each licence text that has to come along says.
LICENCES = {"libjpeg-turbo": "Independent JPEG Group", "libpng": "libpng", "zlib": "Jean-loup Gailly",
            "highway": "Apache License|Redistribution and use", "cxx-runtime": "LLVM"}


def variant_file(files: dict[str, bytes], module: dict, **attributes: str) -> bytes | None:
    """What Gradle takes for the attributes."""
    wanted = {f"org.gradle.{name}": value for name, value in attributes.items()}
    found = [variant for variant in module["variants"] if wanted.items() <= variant["attributes"].items()]
    return files.get(found[0]["files"][0]["url"]) if len(found) == 1 else None


def check_metadata(files: dict[str, bytes], version: str, module: dict):
    names = maven.GROUP, maven.ARTIFACT, version
    component = module["component"]
    if (component["group"], component["module"], component["version"]) != names:
        yield f"the module metadata are of {component}"
    space = "{http://maven.apache.org/POM/4.0.0}"
    pom = xml.fromstring(files[f"{maven.stem(version)}.pom"])
    if tuple(pom.findtext(space + name) for name in ("groupId", "artifactId", "version")) != names:
        yield "the POM has other names"
    if pom.findtext(space + "packaging") != "aar":
        yield "the POM is not that of an AAR"
    for file in (file for variant in module["variants"] for file in variant["files"]):
        content = files.get(file["url"])
        if content is None:
            yield f"lacks {file['url']}"
        elif (file["size"], file["sha256"]) != (len(content), hashlib.sha256(content).hexdigest()):
            yield f"{file['url']} is not what its metadata say"


def check_classes(jar: dict[str, bytes], rules: str, sources: dict[str, bytes], pages: dict[str, bytes]):
    place = PACKAGE.replace(".", "/") + "/"
    classes = {name.removeprefix(place).removesuffix(".class") for name in jar if name.startswith(place)}
    for name, content in jar.items():
        version = struct.unpack(">H", content[6:8])[0]
        if version > NEWEST_CLASSES:
            yield f"classes.jar has {name} of version {version}, newer than {NEWEST_CLASSES}"
    for name in sorted(classes):
        if "$" in name or name == "package-info":
            continue
        source = sources.get(f"{place}{name}.java")
        if source is None:
            yield f"the sources lack {name}"
        elif f"{place}{name}.html" not in pages and re.search(rb"(?m)^public ", source):
            yield f"the API pages lack {name}"
    prefix = "Java_" + PACKAGE.replace(".", "_") + "_"
    natives = [name.removeprefix(prefix).partition("_") for library in LIBRARIES
               for name in check_library.listed_exports(library) if name.startswith(prefix)]
    for name, _, encoded in natives:
        method = encoded.partition("__")[0].replace("_1", "_")  # overloads have their types behind
        if name not in classes or method.encode() not in jar[f"{place}{name}.class"]:
            yield f"classes.jar lacks {name}.{method}, which the library has"
    rule = rf"-keepclasseswithmembernames class {PACKAGE}\.\*\* {{\s*native <methods>;"
    if not natives or not re.search(rule, rules):
        yield "a shrinker may rename what natives are found by"


def refusal(library: dict, abi: str, api: int, stl: str) -> str | None:
    """Why prefab does not give a library to a build for that ABI, API level and C++ runtime."""
    def family(name: str) -> str:
        return "none" if name in ("none", "system") else name.split("_")[0]

    if library["abi"] != abi:
        return f"it is for {library['abi']}"
    if api < library["api"]:
        return f"it needs API level {library['api']}"
    if family(library["stl"]) == "none":
        return None
    if family(library["stl"]) != family(stl):
        return f"it uses {library['stl']}"
    if library["static"] or (library["stl"].endswith("_shared") and stl.endswith("_shared")):
        return None
    return f"as a shared library it uses {library['stl']}"


def check_prefab(files: dict[str, bytes], version: str, api: int, abis: set[str]):
    package = json.loads(files[f"{PREFAB}prefab.json"])
    if (package["name"], package["version"]) != (maven.ARTIFACT, version):
        yield "prefab.json has another name or version"
    for module in {name.split("/")[2] for name in files if name.startswith(f"{PREFAB}modules/")}:
        libs = f"{PREFAB}modules/{module}/libs/"
        for abi in sorted(abis):
            folder = f"{libs}android.{abi}/"
            if folder + "abi.json" not in files:
                yield f"{module} has nothing for {abi}"
                continue
            library = json.loads(files[folder + "abi.json"])
            for stl in ("c++_static", "c++_shared", "none", "system"):
                if reason := refusal(library, abi, api, stl):
                    yield f"prefab refuses {module} for {abi} to callers with {stl}: {reason}"
            # The library is the module's name between "lib" and ".so" unless module.json says otherwise.
            if files.get(f"{folder}lib{module}.so") != files[f"{JNI}{abi}/{LIBRARY}"]:
                yield f"{module} has no library for {abi}, or another one than the application gets"
    for header, text in files.items():
        if header.startswith(HEADERS):
            for included in re.findall(rb'#include "(.*)"', text):
                if HEADERS + included.decode() not in files:
                    yield f"{header} includes {included.decode()}, which is not there"


def build_id(library: pathlib.Path) -> str | None:
    found = re.search(r"Build ID: (\w+)", check_library.run("readelf", "-nW", str(library)))
    return found and found[1]


def check_libraries(files: dict[str, bytes], symbols: dict[str, bytes], builds: dict[str, pathlib.Path]):
    for abi, name in ((abi, name) for abi in builds for name in LIBRARIES):
        with tempfile.TemporaryDirectory() as folder:
            library, debug = pathlib.Path(folder, name), pathlib.Path(folder, "debug")
            library.write_bytes(files[f"{JNI}{abi}/{name}"])
            debug.write_bytes(symbols.get(f"{abi}/{name}.dbg", b""))
            if ".debug_info" in check_library.run("readelf", "-SW", str(library)):
                yield f"{name} for {abi} is not stripped"
            if not debug.stat().st_size or ".symtab" not in check_library.run("readelf", "-SW", str(debug)):
                yield f"there are no native symbols of {name} for {abi}"
            elif not build_id(library) or build_id(library) != build_id(debug):
                yield f"the native symbols of {name} for {abi} are of another library"
            link_map = (builds[abi] / name).with_suffix(".link-map")
            for fault in check_library.check(str(library), "android", link_map=link_map):
                yield f"{name} for {abi}: {fault}"


def verify(repository: pathlib.Path, version: str, builds: dict[str, pathlib.Path]):
    """What is wrong, a line each; builds has the build folder for each ABI, which has the linker's maps."""
    stem = maven.stem(version)
    files = maven.tree(maven.folder(repository, version))
    module = json.loads(files[f"{stem}.module"])
    yield from check_metadata(files, version, module)
    parts = [variant_file(files, module, category="library", usage="java-runtime", libraryelements="aar"),
             variant_file(files, module, category="documentation", docstype="sources"),
             variant_file(files, module, category="documentation", docstype="javadoc"),
             files.get(f"{stem}-native-debug-symbols.zip")]
    if None in parts:
        yield "has not all of archive, sources, API pages and native symbols"
        return
    aar, sources, pages, symbols = map(unzipped, parts)
    required = {"AndroidManifest.xml", "R.txt", "classes.jar", "proguard.txt", METADATA, NOTICE,
                f"{PREFAB}prefab.json", f"{PREFAB}modules/Algorithm/module.json",
                *(f"{JNI}{abi}/{library}" for abi in builds for library in LIBRARIES)}
    if missing := required - aar.keys():
        yield f"the archive lacks {sorted(missing)}"
        return
    for name in ("aarFormatVersion", "aarMetadataVersion"):
        if f"{name}=1.0\n" not in aar[METADATA].decode():
            yield f"the archive's metadata do not say {name}"
    android = "{http://schemas.android.com/apk/res/android}"
    manifest = xml.fromstring(aar["AndroidManifest.xml"])
    api = int(manifest.find("uses-sdk").get(android + "minSdkVersion"))
    yield from check_classes(unzipped(aar["classes.jar"]), aar["proguard.txt"].decode(), sources, pages)
    yield from check_prefab(aar, version, api, {name.split("/")[1] for name in aar if name.startswith(JNI)})
    yield from check_libraries(aar, symbols, builds)
    notice = aar[NOTICE].decode(errors="replace")
    texts = dict(re.findall(r"^={78}\n(\S+)\n={78}\n\n((?:(?!={78}\n).*\n?)*)", notice, re.MULTILINE))
    for name, words in LICENCES.items():
        if not re.search(words, texts.get(name, "")):
            yield f"the notice has no licence text of {name}"
