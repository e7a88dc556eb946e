"""What tests/python/run-all has packed: wheels for both platforms and the source distribution."""

from __future__ import annotations

import base64
import configparser
import csv
import email.message
import email.parser
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import zipfile
from collections.abc import Iterator

import pytest
from documented import INSTALL, START_HEAD, TEN_LINES, TESTS

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGES = pathlib.Path(os.environ.get("FRINGIX_PACKAGES", ""))
PLATFORMS = ["linux", "windows"]
NATIVE = {
    "linux": ["lib/libDAXFringix.so", "lib/libfringix-scan.so", "bin/fringix-head"],
    "windows": ["lib/DAXFringix.dll", "lib/fringix-scan.dll", "bin/fringix-head.exe"],
}

# Of what PEP 600 lets a wheel expect of every Linux.
SYSTEM_LIBRARIES = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "libstdc++.so.6", "libz.so.1", "ld-linux-x86-64.so.2"}
# The newest symbols of the C++ runtime that come with the C library of a tag: those of its generation's GCC.
CXX_RUNTIME = {34: {"GLIBCXX": (3, 4, 29), "CXXABI": (1, 3, 13)}}

pytestmark = pytest.mark.skipif("FRINGIX_PACKAGES" not in os.environ, reason="tests/python/run-all makes the packages")


def wheel_of(platform: str) -> pathlib.Path:
    found = list(PACKAGES.glob({"linux": "*-manylinux*.whl", "windows": "*-win_amd64.whl"}[platform]))
    if platform == "windows" and not found:
        pytest.skip("this run does not build for Windows")
    assert len(found) == 1
    return found[0]


@pytest.fixture(params=PLATFORMS)
def platform(request: pytest.FixtureRequest) -> str:
    return str(request.param)


@pytest.fixture
def wheel(platform: str) -> Iterator[zipfile.ZipFile]:
    with zipfile.ZipFile(wheel_of(platform)) as opened:
        yield opened


def project_version() -> str:
    found = re.search(r"project\(Fringix VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
    assert found
    return found.group(1)


def distribution_info(wheel: zipfile.ZipFile, name: str) -> str:
    return wheel.read(f"fringix-{project_version()}.dist-info/{name}").decode()


def headers(text: str) -> email.message.Message:
    return email.parser.Parser().parsestr(text)


def symbol_versions(file: pathlib.Path) -> dict[str, tuple[int, ...]]:
    """The newest version of each runtime's symbols that a file imports."""
    newest: dict[str, tuple[int, ...]] = {}
    for runtime, version in re.findall(r"\b(GLIBC|GLIBCXX|CXXABI)_([0-9.]+)", subprocess.check_output(["objdump", "-T", file], text=True)):
        newest[runtime] = max(newest.get(runtime, ()), tuple(map(int, version.split("."))))
    return newest


@pytest.fixture
def linux_files(tmp_path: pathlib.Path) -> list[pathlib.Path]:
    with zipfile.ZipFile(wheel_of("linux")) as wheel:
        return [pathlib.Path(wheel.extract(f"fringix/{name}", tmp_path)) for name in NATIVE["linux"]]


def test_the_tag_is_the_oldest_linux_that_has_what_the_files_need(linux_files: list[pathlib.Path]) -> None:
    needed = max(symbol_versions(file)["GLIBC"] for file in linux_files)
    assert wheel_of("linux").name == f"fringix-{project_version()}-py3-none-manylinux_{needed[0]}_{needed[1]}_x86_64.whl"
    assert needed == (2, 34)


def test_that_linux_has_all_that_the_files_need(linux_files: list[pathlib.Path]) -> None:
    allowed = CXX_RUNTIME[34]
    for file in linux_files:
        versions = symbol_versions(file)
        assert versions["GLIBCXX"] <= allowed["GLIBCXX"] and versions["CXXABI"] <= allowed["CXXABI"], file.name
        needed = re.findall(r"NEEDED\s+(\S+)", subprocess.check_output(["objdump", "-p", file], text=True))
        assert set(needed) <= SYSTEM_LIBRARIES, file.name


def test_the_wheel_for_windows_says_so() -> None:
    assert wheel_of("windows").name == f"fringix-{project_version()}-py3-none-win_amd64.whl"


def test_a_wheel_has_the_files_of_its_platform_and_no_other(wheel: zipfile.ZipFile, platform: str) -> None:
    in_folders = {name.split("/", 1)[1] for name in wheel.namelist() if re.match(r"fringix/(lib|bin)/", name)}
    assert in_folders == set(NATIVE[platform])
    assert "fringix/py.typed" in wheel.namelist()
    assert (wheel.getinfo(f"fringix/{NATIVE[platform][2]}").external_attr >> 16) & 0o111


def test_a_wheel_has_every_module_of_the_package(wheel: zipfile.ZipFile) -> None:
    modules = {str(path.relative_to(ROOT / "python")) for path in (ROOT / "python/fringix").rglob("*.py")}
    assert modules == {name for name in wheel.namelist() if name.endswith(".py")}


def test_a_wheel_has_the_licences_of_what_is_inside(wheel: zipfile.ZipFile, platform: str) -> None:
    texts = {pathlib.Path(name).name for name in wheel.namelist() if name.startswith("fringix/licenses/")}
    expected = {"fmt.txt", "CLI11.txt", "nlohmann-json.txt", "Eigen.txt", "libspng.txt"}
    assert expected | ({"zlib.txt", "GCC.txt", "mingw-w64.txt"} if platform == "windows" else set()) <= texts


def test_the_files_are_stripped(wheel: zipfile.ZipFile, platform: str, tmp_path: pathlib.Path) -> None:
    objdump = {"linux": "objdump", "windows": "x86_64-w64-mingw32-objdump"}[platform]
    for name in NATIVE[platform]:
        sections = subprocess.check_output([objdump, "-h", wheel.extract(f"fringix/{name}", tmp_path)], text=True)
        assert ".text" in sections and ".debug" not in sections, name


def test_the_metadata_is_that_of_the_project(wheel: zipfile.ZipFile) -> None:
    metadata = headers(distribution_info(wheel, "METADATA"))
    assert metadata["Version"] == project_version()
    assert metadata["Requires-Python"] == ">=3.9"
    always = [needed for needed in metadata.get_all("Requires-Dist", []) if "extra" not in needed]
    assert [re.split(r"[^a-z]", needed)[0] for needed in always] == ["numpy"]
    assert set(metadata.get_all("Provides-Extra", [])) == {"calibrate", "open3d"}
    assert headers(distribution_info(wheel, "WHEEL"))["Root-Is-Purelib"] == "false"


def test_the_plugin_is_told_to_pytest(wheel: zipfile.ZipFile) -> None:
    entry_points = configparser.ConfigParser()
    entry_points.read_string(distribution_info(wheel, "entry_points.txt"))
    assert dict(entry_points["pytest11"]) == {"fringix.testing": "fringix.testing"}


def test_the_record_has_the_hash_of_every_file(wheel: zipfile.ZipFile) -> None:
    record = {name: (told, size) for name, told, size in csv.reader(distribution_info(wheel, "RECORD").splitlines())}
    assert set(record) == set(wheel.namelist())
    for name, (told, size) in record.items():
        if not name.endswith("/RECORD"):
            content = wheel.read(name)
            hashed = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
            assert (told, size) == (f"sha256={hashed}", str(len(content))), name


def plain_environment() -> dict[str, str]:
    """Without what run-all tells of where the package is."""
    return {name: value for name, value in os.environ.items() if not name.startswith(("FRINGIX_", "PYTHON", "PIP_"))}


def run(*command: object, folder: pathlib.Path, **more: str) -> subprocess.CompletedProcess[str]:
    words, environment = [str(word) for word in command], {**plain_environment(), **more}
    return subprocess.run(
        words, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True
    )


@pytest.fixture(scope="module")
def commands(tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    """The programs of an environment that has the wheel, installed as the document says."""
    folder = tmp_path_factory.mktemp("home")
    shutil.copy(wheel_of("linux"), folder)
    path = os.pathsep.join([os.path.dirname(sys.executable), os.environ["PATH"]])  # this Python, whichever comes first otherwise
    installed = run("sh", "-e", "-c", INSTALL, folder=folder, PATH=path, PIP_NO_INDEX="1")
    assert installed.returncode == 0, installed.stdout
    return folder / "station/bin"


def test_the_ten_lines_are_ten() -> None:
    assert len([line for line in TEN_LINES.splitlines() if line]) <= 10


def test_an_installed_wheel_is_all_that_a_cloud_needs(commands: pathlib.Path, tmp_path: pathlib.Path) -> None:
    (tmp_path / "cloud.py").write_text(TEN_LINES)
    program = [str(commands / "python"), *START_HEAD.split()[1:], "--camera", "320x256", "--projector", "640x400"]
    with subprocess.Popen(program, env=plain_environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as head:
        try:
            assert head.stdout and any(line.startswith("ready") for line in head.stdout)
            scanned = run(commands / "python", "cloud.py", folder=tmp_path)
        finally:
            head.terminate()
    assert scanned.returncode == 0 and "points, expected deviation" in scanned.stdout, scanned.stdout
    assert (tmp_path / "cloud.ply").read_bytes().startswith(b"ply")


def test_pytest_finds_the_plugin_of_an_installed_wheel(commands: pathlib.Path, tmp_path: pathlib.Path) -> None:
    (tmp_path / "station_test.py").write_text(TESTS[0])
    told = run(commands / "python", "-m", "pytest", "-q", "-p", "no:cacheprovider", "station_test.py", folder=tmp_path)
    assert told.returncode == 0, told.stdout


@pytest.fixture
def checkout(tmp_path: pathlib.Path) -> pathlib.Path:
    """What a checkout has that the package is built from, with nothing built."""
    folder = tmp_path / "check out"
    folder.mkdir()
    shutil.copy(ROOT / "CMakeLists.txt", folder)
    shutil.copytree(ROOT / "python", folder / "python", ignore=shutil.ignore_patterns("build", "*.egg-info", "__pycache__"))
    return folder


def test_pip_installs_from_a_checkout_that_is_built(checkout: pathlib.Path, commands: pathlib.Path) -> None:
    install = [commands / "pip", "install", "--no-index", "--no-build-isolation", "--force-reinstall", "--no-deps", "./python"]
    refused = run(*install, folder=checkout)
    assert refused.returncode != 0 and "Build them first: ./run build" in refused.stdout

    (checkout / "build").mkdir()
    (checkout / "build/linux").symlink_to(os.environ["FRINGIX_LINUX_TREE"])
    installed = run(*install, folder=checkout)
    assert installed.returncode == 0, installed.stdout
    found = run(commands / "python", "-c", "import fringix; print(fringix.__file__, fringix.discover())", folder=checkout)
    assert found.returncode == 0 and str(commands.parent) in found.stdout, found.stdout


def test_the_source_distribution_makes_a_wheel_for_the_libraries_of_the_system(commands: pathlib.Path, tmp_path: pathlib.Path) -> None:
    source = PACKAGES / f"fringix-{project_version()}.tar.gz"
    offline = ["--no-index", "--no-deps", "--no-build-isolation"]
    made = run(commands / "pip", "wheel", *offline, "--wheel-dir", tmp_path, source, folder=tmp_path)
    assert made.returncode == 0, made.stdout
    (wheel,) = tmp_path.glob("*.whl")
    assert wheel.name == f"fringix-{project_version()}-py3-none-any.whl"
    with zipfile.ZipFile(wheel) as pure, zipfile.ZipFile(wheel_of("linux")) as platform:
        assert {name for name in platform.namelist() if name.endswith((".py", ".typed"))} <= set(pure.namelist())
        assert not [name for name in pure.namelist() if name.endswith((".so", "fringix-head"))]


@pytest.fixture
def wine(tmp_path: pathlib.Path) -> Iterator[dict[str, str]]:
    launcher, prefix = str(ROOT / "scripts/wine"), str(tmp_path / "prefix")
    subprocess.run([launcher, "--prepare"], check=True)
    yield {"WINEPREFIX": prefix}
    subprocess.run([launcher, "--discard", prefix], check=True)


# There is no Python for Windows among Debian's packages, so programs in C stand in for it.
@pytest.mark.skipif("FRINGIX_WINDOWS_BUILD" not in os.environ, reason="this run does not build for Windows")
def test_on_windows_the_libraries_load_and_reach_the_head_that_comes_with_them(tmp_path: pathlib.Path, wine: dict[str, str]) -> None:
    with zipfile.ZipFile(wheel_of("windows")) as wheel:
        wheel.extractall(tmp_path)
    libraries, launcher = tmp_path / "fringix/lib", ROOT / "scripts/wine"
    for program in ("first_picture_c.exe", "fringix-scan-abi-tests.exe"):
        shutil.copy(pathlib.Path(os.environ["FRINGIX_WINDOWS_BUILD"], "bin", program), libraries)
    command = [str(launcher), str(tmp_path / "fringix/bin/fringix-head.exe"), "--address", "127.0.0.2"]
    environment = {**plain_environment(), **wine}
    with subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as head:
        try:
            assert head.stdout and any(line.startswith("ready") for line in head.stdout)
            picture = run(launcher, libraries / "first_picture_c.exe", folder=tmp_path, **wine)
            assert picture.returncode == 0 and "SLALL_OKAY" in picture.stdout, picture.stdout
        finally:
            head.terminate()
    tests = run(launcher, libraries / "fringix-scan-abi-tests.exe", folder=tmp_path, **wine)
    assert tests.returncode == 0, tests.stdout
