"""A Maven repository in a folder, with the metadata that Gradle prefers to a POM."""

import hashlib
import io
import json
import pathlib
import shutil
import zipfile

GROUP = "com.orvik.camera"
ARTIFACT = "algorithm"

# The comment leads Gradle on to its own metadata.
POM = """<?xml version="1.0" encoding="UTF-8"?>
<project xmlns="http://maven.apache.org/POM/4.0.0" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
         xsi:schemaLocation="http://maven.apache.org/POM/4.0.0 https://maven.apache.org/xsd/maven-4.0.0.xsd">
  <!-- do_not_remove: published-with-gradle-metadata -->
  <modelVersion>4.0.0</modelVersion>
  <groupId>{group}</groupId>
  <artifactId>{artifact}</artifactId>
  <version>{version}</version>
  <packaging>aar</packaging>
  <name>libAlgorithm</name>
  <description>Native image library of a camera application</description>
</project>
"""
ARCHIVE = {"org.gradle.category": "library", "org.gradle.dependency.bundling": "external",
           "org.gradle.libraryelements": "aar"}
DOCUMENTS = {"org.gradle.category": "documentation", "org.gradle.dependency.bundling": "external",
             "org.gradle.usage": "java-runtime"}
# What Gradle chooses among, by attributes: the end of the file's name beside them.
VARIANTS = {
    "releaseApi": (ARCHIVE | {"org.gradle.usage": "java-api"}, ".aar"),
    "releaseRuntime": (ARCHIVE | {"org.gradle.usage": "java-runtime"}, ".aar"),
    "releaseSources": (DOCUMENTS | {"org.gradle.docstype": "sources"}, "-sources.jar"),
    "releaseJavadoc": (DOCUMENTS | {"org.gradle.docstype": "javadoc"}, "-javadoc.jar"),
}


def tree(folder: pathlib.Path, pattern: str = "*") -> dict[str, bytes]:
    """The files below a folder by their paths in it."""
    return {path.relative_to(folder).as_posix(): path.read_bytes()
            for path in sorted(folder.rglob(pattern)) if path.is_file()}


def zipped(files: dict[str, bytes]) -> bytes:
    """An archive, the same for the same files."""
    target = io.BytesIO()
    with zipfile.ZipFile(target, "w") as archive:
        for name in sorted(files):
            archive.writestr(zipfile.ZipInfo(name), files[name], zipfile.ZIP_DEFLATED)
    return target.getvalue()


def unzipped(content: bytes) -> dict[str, bytes]:
    with zipfile.ZipFile(io.BytesIO(content)) as archive:
        return {name: archive.read(name) for name in archive.namelist() if not name.endswith("/")}


def folder(repository: pathlib.Path, version: str) -> pathlib.Path:
    return repository.joinpath(*GROUP.split("."), ARTIFACT, version)


def stem(version: str) -> str:
    return f"{ARTIFACT}-{version}"


def withdraw(repository: pathlib.Path, version: str) -> None:
    shutil.rmtree(folder(repository, version), ignore_errors=True)


def publish(repository: pathlib.Path, version: str, files: dict[str, bytes]) -> None:
    """Writes the files, by the ends of their names, and what describes them."""
    variants = []
    for name, (attributes, end) in VARIANTS.items():
        content, file = files[end], stem(version) + end
        variants.append({"name": name, "attributes": attributes, "files": [
            {"name": file, "url": file, "size": len(content),
             **{kind: hashlib.new(kind, content).hexdigest() for kind in ("sha512", "sha256", "sha1", "md5")}}]})
    module = {"formatVersion": "1.1", "component": {"group": GROUP, "module": ARTIFACT, "version": version,
                                                    "attributes": {"org.gradle.status": "release"}},
              "variants": variants}
    pom = POM.format(group=GROUP, artifact=ARTIFACT, version=version)
    files = files | {".pom": pom.encode(), ".module": json.dumps(module, indent=2).encode()}
    withdraw(repository, version)
    place = folder(repository, version)
    place.mkdir(parents=True)
    for end, content in files.items():
        (place / (stem(version) + end)).write_bytes(content)
