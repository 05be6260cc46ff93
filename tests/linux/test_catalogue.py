"""The message catalogue is that of the menu language, or of the person's own languages while the settings
name none; numbers are written alike in all of them."""

import subprocess

import pytest
from settings_helpers import Store, complaints

DOMAIN = "portmeld-catalogue-test"
KEY = "db/menu_widget/language"
LANGUAGES = ["en", "de", "fr", "nb", "es", "es_419", "zh_CN", "zh_TW", "sr", "sr@latin", "he"]


@pytest.fixture
def store(root):
    """The settings of the machine."""
    return Store(root)


@pytest.fixture
def catalogues(tmp_path):
    """A folder of catalogues; the text of each is the name of its language, and an umlaut."""
    folder = tmp_path / "locale"
    for language in LANGUAGES:
        messages = folder / language / "LC_MESSAGES"
        messages.mkdir(parents=True)
        subprocess.run(
            ["msgfmt", "-o", messages / f"{DOMAIN}.mo", "-"],
            input='msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n'
            f'msgid "SID_PLAY"\nmsgstr "{language} ä"\n',
            text=True,
            check=True,
        )
    return folder


@pytest.fixture
def bound(probe, catalogues):
    """Starts a probe with some variables and binds the catalogue; `language` asks it."""

    def start(**variables):
        unset = dict.fromkeys(["LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"], "")
        one = probe(env={**unset, **variables})
        one.bind = lambda: one.call("bind-catalogue", DOMAIN, catalogues)
        one.language = lambda: one.call("translate", DOMAIN, "SID_PLAY").removesuffix(" ä")
        assert one.bind() == 0
        return one

    return start


@pytest.mark.parametrize(
    "menu, language",
    [
        ("de_DE", "de"),
        ("de_DE.utf8", "de"),
        ("zh_CN", "zh_CN"),
        ("xx_YY", "en"),
        ("no_NO", "nb"),
        ("iw_IL", "he"),
        ("es_AR", "es_419"),
        ("es_ES", "es"),
        ("zh-Hant-MO", "zh_TW"),
        ("sr_RS@latin", "sr@latin"),
        ("sr-Latn-RS", "sr@latin"),
        ("sr_RS", "sr"),
    ],
)
def test_the_menu_language_chooses_the_catalogue(bound, store, menu, language):
    store(KEY, f"{menu}\n")
    one = bound(LC_ALL="fr_FR.UTF-8")
    assert one.language() == language
    assert complaints(one) == []


def test_another_language_comes_with_the_next_binding(bound, store):
    store(KEY, "de_DE\n")
    one = bound()
    assert one.language() == "de"
    store(KEY, "fr_FR\n")
    assert one.language() == "de"
    assert one.bind() == 0
    assert one.language() == "fr"


@pytest.mark.parametrize(
    "variables, language",
    [
        ({}, "en"),
        ({"LANG": "de_DE.UTF-8"}, "de"),
        ({"LC_MESSAGES": "de_DE.UTF-8", "LANG": "fr_FR.UTF-8"}, "de"),
        ({"LC_ALL": "de_DE.UTF-8", "LC_MESSAGES": "fr_FR.UTF-8", "LANG": "fr_FR.UTF-8"}, "de"),
        ({"LANG": "de_DE.UTF-8", "LANGUAGE": "xx:fr:de"}, "fr"),
        ({"LANG": "C.UTF-8", "LANGUAGE": "fr"}, "fr"),
        ({"LANG": "C", "LANGUAGE": "fr"}, "en"),
        ({"LANG": "C.UTF-8"}, "en"),
        ({"LANG": "nn_NO.UTF-8"}, "nb"),
        ({"LANG": "../../../de"}, "en"),
    ],
)
def test_without_a_menu_language_the_environment_chooses(bound, store, variables, language):
    assert bound(**variables).language() == language


def test_an_empty_menu_language_is_none(bound, store):
    store(KEY, "\n")
    assert bound(LANG="de_DE.UTF-8").language() == "de"


def test_the_environment_is_that_of_the_start(bound, store):
    """Binding a catalogue changes the environment; the person's languages are not forgotten."""
    store(KEY, "fr_FR\n")
    one = bound(LANG="xx_YY.UTF-8", LANGUAGE="de")
    assert one.language() == "fr"
    store.path(KEY).unlink()
    assert one.bind() == 0
    assert one.language() == "de"


def test_a_menu_language_that_is_none_is_english(bound, store):
    store(KEY, "../../../de\n")
    assert bound(LANG="de_DE.UTF-8").language() == "en"


def test_a_menu_language_that_cannot_be_read_is_told_and_counts_as_unset(bound, store):
    store(KEY, b"\xff\n")
    one = bound(LANG="de_DE.UTF-8")
    assert one.language() == "de"
    assert len(complaints(one)) == 1


@pytest.mark.parametrize("variable", ["LC_ALL", "LC_NUMERIC", "LANG"])
def test_numbers_are_written_alike_in_every_language(bound, store, variable):
    store(KEY, "de_DE\n")
    one = bound(**{variable: "de_DE.UTF-8"})
    assert one.call("print-number") == "1.50"


def test_without_a_domain_it_fails(probe, catalogues):
    one = probe()
    assert one.call("bind-catalogue", "", catalogues) != 0
