"""The ready-made handlers: what the daemon launches is opened by the user's default applications."""

import os
import subprocess
import urllib.parse

import pytest
from application_helpers import (  # noqa: F401 (fixtures are found by name)
    bus,
    peer,
    programs,
    request,
    start,
    write_entry,
)
from handler_helpers import (  # noqa: F401 (fixtures are found by name)
    ALL,
    BUILT,
    FLOORREEL,
    FOLIAN,
    LUMET,
    OPENED,
    PICREEL,
    SHOPREEL,
    VIDREEL,
    browse,
    browse_camera,
    connected,
    file_in,
    handlers,
    music,
    one_after_the_other,
    play_list,
    stick,
)

# ---- the entries


def test_each_application_of_the_daemon_has_an_entry_that_is_valid_and_not_shown_in_menus():
    entries = list(BUILT.glob("*.desktop"))
    assert {entry.stem for entry in entries} == ALL
    validated = subprocess.run(
        ["desktop-file-validate", *entries], capture_output=True, text=True, check=False
    )
    assert (validated.returncode, validated.stdout, validated.stderr) == (0, "", "")
    for entry in entries:
        lines = entry.read_text().splitlines()
        assert "NoDisplay=true" in lines
        # Else it could become somebody's default application, and hand things to itself.
        assert not [line for line in lines if line.startswith("MimeType")]
        assert f"Exec=/usr/libexec/portmeld/portmeld-open {entry.stem}" in lines


def test_a_request_of_the_daemon_reaches_the_default_application(handlers, start, stick):
    handlers.default("inode/directory", "browser")
    handlers.default("audio/mpeg", "jukebox")
    program = BUILT / "portmeld-open"
    write_entry(handlers.root, FOLIAN, Exec=f"{program} {FOLIAN}")
    song = file_in(stick, "song.mp3")
    probe = start(session_bus=None)
    handle = request(probe, FOLIAN)
    for data, opener, opened in [
        (music(song), "jukebox", song),
        (browse(stick), "browser", str(stick)),
        (music(song), "jukebox", song),
        (browse(stick), "browser", str(stick)),
    ]:
        for key, value in data:
            probe.call("app-data", handle, key, value)
        assert probe.call("app-send", handle) == 0
        told = handlers.programs.started()
        assert (told["program"], told["arguments"]) == (opener, [opened])
    assert probe.call("app-destroy", handle) == 0


# ---- the content browser


def test_browsing_opens_the_folder_with_the_file_manager(handlers, stick):
    handlers.default("inode/directory")
    assert handlers.open(FOLIAN, browse(stick)) == (OPENED, "")
    told = handlers.programs.started()
    assert told["arguments"] == [str(stick)]
    assert "PORTMELD_LAUNCH_DATA" not in told["environment"]


def test_music_opens_with_the_player_of_its_content_type(handlers, stick):
    handlers.default("audio/mpeg", "mp3-player")
    handlers.default("audio/flac", "flac-player")
    song = file_in(stick, "Song #1?.flac")
    assert handlers.open(FOLIAN, music(song)) == (OPENED, "")
    told = handlers.programs.started()
    assert (told["program"], told["arguments"]) == ("flac-player", [song])


def test_what_was_set_last_tells_music_from_browsing(handlers, stick):
    handlers.default("inode/directory", "browser")
    handlers.default("audio/mpeg", "jukebox")
    song = file_in(stick, "song.mp3")
    handlers.open(FOLIAN, one_after_the_other(music(song), browse(stick)))
    assert handlers.programs.started()["program"] == "browser"
    handlers.open(FOLIAN, one_after_the_other(browse(stick), music(song)))
    assert handlers.programs.started()["program"] == "jukebox"
    twice = one_after_the_other(browse(stick), music(song), browse(stick), connected(stick).items())
    handlers.open(FOLIAN, twice)
    assert handlers.programs.started()["program"] == "browser"


def test_old_data_of_a_stick_that_is_gone_are_not_looked_at(handlers, stick):
    handlers.default("audio/mpeg")
    song = file_in(stick, "song.mp3")
    data = one_after_the_other(browse("/nonexistent/stick"), music(song))
    assert handlers.open(FOLIAN, data) == (OPENED, "")


@pytest.mark.parametrize(
    "busnumber, address, address_of_camera",
    [
        ("1", "23", "gphoto2://[usb:001,023]/"),
        ("999", "1", "gphoto2://[usb:999,001]/"),
    ],
)
def test_a_camera_opens_by_its_place_on_the_bus(handlers, busnumber, address, address_of_camera):
    handlers.default("inode/directory", "browser")
    handlers.default("x-scheme-handler/gphoto2", "camera-viewer")
    assert handlers.open(FOLIAN, browse_camera(busnumber, address)) == (OPENED, "")
    told = handlers.programs.started()
    assert (told["program"], told["arguments"]) == ("camera-viewer", [address_of_camera])


def test_a_camera_opens_with_the_file_manager_where_nothing_else_does(handlers):
    handlers.default("inode/directory", "browser")
    assert handlers.open(FOLIAN, browse_camera()) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == ["gphoto2://[usb:001,023]/"]


def test_a_device_of_no_known_type_after_a_camera_is_a_folder(handlers, stick):
    handlers.default("inode/directory")
    unknown = [("device_path", str(stick)), ("device_name", "X"), ("content_type", "all")]
    assert handlers.open(FOLIAN, one_after_the_other(browse_camera(), unknown)) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [str(stick)]


# ---- the companion application


def test_a_device_that_came_opens_as_a_folder(handlers, stick):
    handlers.default("inode/directory")
    assert handlers.open(LUMET, connected(stick)) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [str(stick)]


def test_a_camera_that_came_opens_by_its_place_on_the_bus(handlers):
    handlers.default("x-scheme-handler/gphoto2")
    assert handlers.open(LUMET, connected(device_class="6")) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == ["gphoto2://[usb:001,002]/"]


def test_a_device_that_went_opens_nothing(handlers, stick):
    handlers.default("inode/directory")
    assert handlers.open(LUMET, connected(stick, action="DELETE")) == (OPENED, "")
    assert handlers.programs.nothing_started()


# ---- the players


@pytest.mark.parametrize(
    "application, name, content_type",
    [
        (VIDREEL, "clip.mkv", "video/x-matroska"),
        (PICREEL, "photo.JPG", "image/jpeg"),
    ],
)
def test_the_players_open_the_files_of_their_list(handlers, stick, application, name, content_type):
    handlers.default(content_type)
    first, second = file_in(stick, name), file_in(stick, "2 " + name)
    assert handlers.open(application, play_list(first, second, root=stick)) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [first, second]


def no_text(stick):
    """A film in folders whose names are not UTF-8, and its path as launch data can tell it."""
    folder = os.fsencode(stick) + b"/caf\xe9"
    os.mkdir(folder)
    film = folder + b"/fl\xfbte.mp4"
    with open(film, "wb"):
        pass
    return film, os.fsdecode(folder), film.decode(errors="replace")


def test_a_film_whose_path_is_not_utf_8_is_played(handlers, stick):
    handlers.default("video/mp4")
    film, folder, told = no_text(stick)
    root = os.fsencode(folder).decode(errors="replace")
    assert "\ufffd" in root
    assert handlers.open(VIDREEL, play_list(told, root=root)) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [os.fsdecode(film)]


def test_a_folder_whose_name_is_not_utf_8_is_browsed(handlers, stick):
    handlers.default("inode/directory")
    folder = os.fsencode(stick) + b"/caf\xe9"
    os.mkdir(folder)
    assert handlers.open(FOLIAN, browse(folder.decode(errors="replace"))) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [os.fsdecode(folder)]


def test_of_two_films_that_are_told_alike_neither_is_played(handlers, stick):
    handlers.default("video/mp4")
    film, folder, told = no_text(stick)
    with open(film.replace(b"\xfb", b"\xfc"), "wb"):
        pass
    assert "is not there" in handlers.refuses(VIDREEL, play_list(told))


def test_a_film_that_is_really_named_so_is_played(handlers, stick):
    handlers.default("video/mp4")
    _, folder, told = no_text(stick)
    named = file_in(stick, "fl\ufffdte.mp4")
    with open(os.fsencode(stick) + b"/fl\xfbte.mp4", "wb"):
        pass
    assert handlers.open(VIDREEL, play_list(named)) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [named]


def test_a_play_list_without_a_root_is_played_too(handlers, stick):
    handlers.default("video/mp4")
    assert handlers.open(VIDREEL, play_list(file_in(stick, "clip.mp4"))) == (OPENED, "")


def test_the_demo_video_of_a_stick_is_played(handlers, stick):
    handlers.default("video/mp2t")
    demo = file_in(stick, "DEMO_LED.tp")
    assert handlers.open(SHOPREEL, {"root_path": demo}) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [demo]


@pytest.mark.parametrize("name", ["recording.ts", "recording.TP", "film.divx", "clip.mkv"])
def test_a_player_of_another_kind_of_video_plays_what_has_none(handlers, stick, name):
    handlers.default("video/mp4", "player")
    handlers.default("text/plain", "editor")
    handlers.default("application/octet-stream", "hex-editor")
    assert handlers.open(VIDREEL, play_list(file_in(stick, name))) == (OPENED, "")
    assert handlers.programs.started()["program"] == "player"


def test_the_demo_of_this_machine_is_its_videos_by_name(handlers):
    handlers.default("video/mp4")
    folder = handlers.root / "opt" / "data" / "demo_movie"
    folder.mkdir(parents=True)
    for name in ("b.mp4", "a.ts", "c.jpg", ".hidden.mp4", "read me.txt"):
        file_in(folder, name)
    folder.joinpath("folder.mp4").mkdir()
    assert handlers.open(FLOORREEL) == (OPENED, "")
    videos = [str(folder / name) for name in ("a.ts", "b.mp4")]
    assert handlers.programs.started()["arguments"] == videos


def test_the_demo_of_a_machine_without_videos_is_its_pictures(handlers):
    handlers.default("image/jpeg")
    folder = handlers.root / "opt" / "data" / "demo_movie"
    folder.mkdir(parents=True)
    picture = file_in(folder, "picture.jpeg")
    # The data of other launches come along and mean nothing here.
    assert handlers.open(FLOORREEL, {"root_path": "/nonexistent"}) == (OPENED, "")
    assert handlers.programs.started()["arguments"] == [picture]


def test_an_application_that_the_bus_starts_is_told_before_the_handler_ends(
    handlers, peer, bus, stick
):
    viewer = peer()
    viewer.be_application("org.some.Viewer", "/org/some/Viewer")
    handlers.default("inode/directory", "org.some.Viewer", DBusActivatable="true")
    assert handlers.open(FOLIAN, browse(stick), session_bus=bus) == (OPENED, "")
    call = viewer.call()
    [address], _ = call["arguments"]
    assert call["method"] == "Open"
    assert urllib.parse.unquote(address) == f"file://{stick}"
