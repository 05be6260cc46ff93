"""What the ready-made handlers refuse, and what they say when nothing opens what they were given."""

import os
import pathlib
import shutil
import subprocess

import pytest
from application_helpers import (  # noqa: F401 (fixtures are found by name)
    bus,
    peer,
    programs,
    start,
)
from handler_helpers import (  # noqa: F401 (fixtures are found by name)
    ALL,
    BUILT,
    FLOORREEL,
    FOLIAN,
    LUMET,
    NOTHING_OPENS_IT,
    NOT_STARTED,
    OPENED,
    PICREEL,
    REFUSED,
    SHOPREEL,
    VIDREEL,
    browse,
    browse_camera,
    connected,
    file_in,
    handlers,
    music,
    play_list,
    stick,
)

# ---- what is refused


def test_a_machine_without_a_demo_refuses_to_play_it(handlers):
    assert "neither a video nor a picture" in handlers.refuses(FLOORREEL)


@pytest.mark.parametrize("application", sorted(ALL - {FLOORREEL}))
@pytest.mark.parametrize(
    "data, complaint",
    [
        (None, "no launch data"),
        ("", "JSON"),
        ("{", "JSON"),
        ("[]", "JSON object"),
        ("null", "JSON object"),
        ('"text"', "JSON object"),
        ("{}", "lack"),
        ('{"key": 1}', "no text"),
        ('{"key": null}', "no text"),
        (b'{"device_path": "/\xff"}', "not UTF-8"),
        ('{"a":' * 20000, "nested"),
        ('{"a": ' + "[" * 60000, "nested"),
        # Brackets that only seem to stand in a text, for whoever counts them.
        ("{\"a\": ['\"', " + "[" * 60000 + "'\"'", "JSON"),
        ('{"a": /*"*/ ' + "[" * 60000 + '/*"*/', "JSON"),
        ('{"a": "\\ud800", "\', ' + "[" * 60000, "JSON"),
        ('{"a": "\\udc00"}', "JSON"),
        ('{"a": "\\ud83d\\u0041"}', "JSON"),
        ('{"a": "\\u12"}', "JSON"),
        ('{"a": "\\q"}', "JSON"),
        ("{}{}", "JSON"),
        ('{"unrelated": "data"}', "lack"),
    ],
    ids=[
        "none",
        "empty",
        "unfinished",
        "array",
        "null",
        "text",
        "nothing",
        "number",
        "null member",
        "no UTF-8",
        "deep objects",
        "deep arrays",
        "deep behind single quotes",
        "deep behind a comment",
        "deep behind half a character",
        "half a character",
        "two first halves of a character",
        "short escape",
        "no escape",
        "two objects",
        "others",
    ],
)
def test_data_that_cannot_be_read_are_refused(handlers, application, data, complaint):
    assert complaint in handlers.refuses(application, data)


@pytest.mark.parametrize("path", ["", "relative", "/nonexistent/folder", "file:///tmp", "{file}"])
def test_what_is_no_folder_is_not_browsed(handlers, stick, path):
    handlers.default("inode/directory")
    path = path.format(file=file_in(stick, "file"))
    handlers.refuses(FOLIAN, browse(path))
    handlers.refuses(LUMET, connected(path))


@pytest.mark.parametrize("path", ["", "relative.mp4", "/nonexistent.mp4", "{folder}", "/dev/null"])
def test_what_is_no_file_is_not_played(handlers, stick, path):
    for content_type in ("video/mp4", "audio/mpeg", "image/jpeg"):
        handlers.default(content_type)
    path = path.format(folder=stick)
    handlers.refuses(VIDREEL, play_list(path))
    handlers.refuses(PICREEL, play_list(path))
    handlers.refuses(SHOPREEL, {"root_path": path})
    handlers.refuses(FOLIAN, music(path))


def test_a_list_that_leads_out_of_its_root_is_not_played(handlers, stick, tmp_path):
    handlers.default("video/mp4")
    inside, outside = file_in(stick, "a.mp4"), file_in(tmp_path, "a.mp4")
    beside = stick.with_name(stick.name + " 2")
    beside.mkdir()
    link = stick / "link.mp4"
    link.symlink_to(outside)
    dots = f"{stick}/../../a.mp4"
    for path in (outside, file_in(beside, "a.mp4"), str(link), dots):
        assert "outside of" in handlers.refuses(VIDREEL, play_list(inside, path, root=stick))


def test_a_root_that_is_reached_by_a_link_is_a_root(handlers, stick, tmp_path):
    handlers.default("video/mp4")
    link = tmp_path / "link"
    link.symlink_to(stick)
    file_in(stick, "a.mp4")
    assert handlers.open(VIDREEL, play_list(str(link / "a.mp4"), root=link)) == (OPENED, "")


@pytest.mark.parametrize(
    "text",
    [
        "",
        "[]",
        "{}",
        '{"items": {}}',
        '{"items": []}',
        '{"items": [1]}',
        '{"items": [{}]}',
        '{"items": [{"file_path": 1}]}',
        '{"items": [{"file_path": null}]}',
        '{"items": ' + "[" * 60000,
    ],
    ids=range(10),
)
def test_a_play_list_that_cannot_be_read_is_refused(handlers, text):
    handlers.refuses(VIDREEL, {"play_list_data": text})


@pytest.mark.parametrize(
    "number, address", [("0", "1"), ("1", "1000"), ("-1", "-1"), ("1 ", "1"), ("", ""), ("1", "1]/..")]
)
def test_a_camera_without_a_place_on_the_bus_is_refused(handlers, number, address):
    handlers.default("x-scheme-handler/gphoto2")
    handlers.refuses(FOLIAN, browse_camera(number, address))
    handlers.refuses(LUMET, connected(device_class="6", number=number, address=address))


def test_an_action_that_does_not_exist_is_refused(handlers, stick):
    handlers.refuses(LUMET, connected(stick, action="add"))


def test_control_characters_of_a_name_do_not_reach_the_terminal(handlers):
    said = handlers.refuses(FOLIAN, browse("/nonexistent\x1b[2J\n"))
    assert "\x1b" not in said


def test_an_application_that_it_does_not_stand_in_for_is_refused(handlers):
    handlers.refuses("org.some.player", {})
    status, said = handlers.open("--help")
    assert status == REFUSED


# ---- what cannot be opened


def german(handlers):
    """The environment of a German, whose catalogues are those that were built."""
    handlers.root.joinpath("usr", "share").mkdir(parents=True)
    shutil.copytree(BUILT / "po", handlers.root / "usr" / "share" / "locale")
    return {"LANGUAGE": "de"}


def things(stick):
    """One thing of each kind: the launch, and the German and English words for it."""
    return [
        (FOLIAN, browse(stick), "Ordner", "folder"),
        (VIDREEL, play_list(file_in(stick, "a.mp4")), "Video", "video"),
        (PICREEL, play_list(file_in(stick, "a.jpg")), "Bild", "picture"),
        (FOLIAN, music(file_in(stick, "a.mp3")), "Musik", "music"),
        (FOLIAN, browse_camera(), "Kamera", "camera"),
    ]


def test_what_nothing_opens_is_told_to_the_viewer_in_his_language(handlers, peer, bus, stick):
    server = peer()
    server.be_notification_server()
    env = german(handlers)
    for application, data, word, _ in things(stick):
        status, said = handlers.open(application, data, session_bus=bus, env=env)
        assert (status, said.count("\n")) == (NOTHING_OPENS_IT, 1)
        assert "no default application opens" in said
        name, replaced, _, title, body, actions, hints, timeout = server.call()["arguments"]
        assert (name, replaced, actions, hints, timeout) == ("portmeld", 0, [], {}, -1)
        assert title == "Dafür fehlt eine Anwendung"
        assert word in body
    assert server.calls_so_far() == []


def test_without_a_catalogue_the_viewer_is_told_in_english(handlers, peer, bus, stick):
    server = peer()
    server.be_notification_server()
    for application, data, _, word in things(stick):
        handlers.open(application, data, session_bus=bus)
        title, body = server.call()["arguments"][3:5]
        assert title == "Nothing to open this with"
        assert word in body


def test_every_language_has_all_texts():
    languages = [
        line
        for line in pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"], "handlers", "po", "LINGUAS")
        .read_text()
        .splitlines()
        if not line.startswith("#")
    ]
    assert len(languages) >= 12
    for language in languages:
        catalogue = BUILT / "po" / language / "LC_MESSAGES" / "portmeld-handlers.mo"
        texts = subprocess.run(
            ["msgunfmt", catalogue], capture_output=True, text=True, check=True
        ).stdout
        assert texts.count("\nmsgid ") == 6, language


@pytest.mark.parametrize("with_bus", [True, False], ids=["bus", "no bus"])
def test_without_a_notification_server_the_failure_is_told_all_the_same(
    handlers, bus, stick, with_bus
):
    status, said = handlers.open(FOLIAN, browse(stick), session_bus=bus if with_bus else None)
    assert (status, said.count("\n")) == (NOTHING_OPENS_IT, 1)


def test_a_camera_is_not_given_to_what_only_opens_files(handlers):
    program = handlers.programs.make("browser")
    handlers.default("inode/directory", "browser", Exec=f"{program} %F")
    assert handlers.open(FOLIAN, browse_camera())[0] == NOTHING_OPENS_IT


def test_an_application_that_does_not_start_is_told_of(handlers, bus, stick):
    handlers.default("inode/directory", "org.some.Viewer", DBusActivatable="true")
    status, said = handlers.open(FOLIAN, browse(stick), session_bus=bus)
    assert (status, said.count("\n")) == (NOT_STARTED, 1)
    assert "does not start" in said
