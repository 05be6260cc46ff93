"""The message catalogues: the sources that translators write, and what the build made of them."""
import collections
import functools
import gettext
import json
import re
import unicodedata

from resource_files import built, run, source

DOMAIN = "portmeld"

# Message id: (its placeholders, its longest visible length without the name).
MESSAGES = {
    "TV_SID_MIX_NEW_DEVICE_CONNECTED": (["{1}"], 40),
    "TV_SID_WOULD_U_LIKE_BROWSE_FILES": ([], 70),
    "COM_COMMONCTRL_BROWSE": ([], 14),
    "COM_SID_MIX_FILE_NAME_COLON": (["{1}"], 30),
    "COM_SID_FILE_DETECTED_ON_THIS_DEVICE": ([], 60),
    "TV_SID_LIKE_TO_PLAY_FILE": ([], 50),
    "SID_PLAY": ([], 14),
    "COM_SID_CANCEL": ([], 14),
    "TV_SID_DEVICE_BEEN_DISCONNECTED": ([], 60),
}
BUTTONS = ["COM_COMMONCTRL_BROWSE", "SID_PLAY", "COM_SID_CANCEL"]
WITH_NAME = [message_id for message_id, (placeholders, _) in MESSAGES.items() if placeholders]

FEWEST_LANGUAGES = 38
RIGHT_TO_LEFT = ["ar", "fa", "he", "ur"]
ISOLATED_NAME = "\u2068{1}\u2069"
BIDI_CONTROLS = set("\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e\u2066\u2067\u2068\u2069")

# A composed text has at most 255 bytes; the name in it gets at least this many of them.
TEXT_BYTES = 255
NAME_BYTES = 128

# What a television asks for, and the catalogue that answers.
REQUESTS = {
    "en_US.utf8": "en",
    "en_GB": "en",
    "de_AT.UTF-8": "de",
    "es_ES": "es",
    "es_AR": "es",
    "es_419": "es_419",
    "es_MX.utf8": "es_MX",
    "pt_PT": "pt",
    "pt_BR.utf8": "pt_BR",
    "fr_CA": "fr_CA",
    "fr_FR": "fr",
    "nb_NO": "nb",
    "sr_RS": "sr",
    "sr_RS@latin": "sr@latin",
    "ar_AE": "ar",
    "he_IL": "he",
    "zh_CN.utf8": "zh_CN",
    "zh_TW": "zh_TW",
    "zh_HK": "zh_HK",
}

Entry = collections.namedtuple("Entry", "msgid text comments flags")


@functools.lru_cache(maxsize=None)
def languages():
    lines = source("po", "LINGUAS").read_text(encoding="utf-8").splitlines()
    names = [word for line in lines for word in line.partition("#")[0].split()]
    assert len(names) >= FEWEST_LANGUAGES, f"only {len(names)} languages in LINGUAS"
    return names


@functools.lru_cache(maxsize=None)
def entries(path):
    """The entries of a catalogue, the header (message id "") included, obsolete ones too."""
    normal = run("msgcat", "--no-wrap", path)
    assert normal.returncode == 0, normal.stderr
    result = []
    for block in normal.stdout.strip().split("\n\n"):
        lines = [re.sub(r"^#~ ", "", line) for line in block.splitlines()]
        fields = collections.defaultdict(str)
        field = ""
        for line in lines:
            if line.startswith("#"):
                continue
            keyword, quote, rest = line.partition('"')
            field = keyword.strip() or field
            fields[field] += json.loads(quote + rest)
        result.append(
            Entry(
                fields["msgid"],
                fields["msgstr"],
                tuple(line[2:].strip() for line in lines if line.startswith("#.")),
                tuple(line[2:].strip() for line in lines if line.startswith("#,")),
            )
        )
    return result


def catalogue(language):
    return entries(source("po", f"{language}.po"))


def texts(language):
    return {entry.msgid: entry.text for entry in catalogue(language) if entry.msgid}


def every_text():
    for language in languages():
        for message_id, text in texts(language).items():
            yield language, message_id, text


def visible_length(text):
    return sum(
        not unicodedata.category(char).startswith("M") and unicodedata.category(char) != "Cf"
        for char in text
    )


def test_at_least_38_languages_are_offered_and_none_twice():
    assert len(languages()) >= FEWEST_LANGUAGES
    assert len(set(languages())) == len(languages())


def test_the_right_to_left_languages_are_offered():
    assert set(RIGHT_TO_LEFT) <= set(languages())


def test_every_language_has_a_catalogue_and_every_catalogue_is_offered():
    assert {path.stem for path in source("po").glob("*.po")} == set(languages())


def test_every_catalogue_passes_the_checks_of_msgfmt_without_a_warning():
    problems = []
    for language in languages():
        check = run("msgfmt", "--check", "-o", "/dev/null", source("po", f"{language}.po"))
        if check.returncode != 0 or check.stderr:
            problems.append(f"{language}: {check.stderr}")
    assert not problems


def test_every_catalogue_says_which_language_it_is_in_and_is_utf8():
    problems = []
    for language in languages():
        header = next(entry.text for entry in catalogue(language) if not entry.msgid).splitlines()
        for line in (f"Language: {language}", "Content-Type: text/plain; charset=UTF-8"):
            if line not in header:
                problems.append(f"{language}: no line {line!r}")
        if not any(line.startswith("Plural-Forms: nplurals=") for line in header):
            problems.append(f"{language}: no plural forms")
    assert not problems


def test_every_catalogue_holds_exactly_the_message_ids():
    problems = [
        f"{language}: {set(texts(language)) ^ set(MESSAGES)}"
        for language in languages()
        if set(texts(language)) != set(MESSAGES)
    ]
    assert not problems


def test_no_catalogue_has_a_fuzzy_entry():
    problems = [
        f"{language}: {entry.msgid}"
        for language in languages()
        for entry in catalogue(language)
        if any("fuzzy" in flag for flag in entry.flags)
    ]
    assert not problems


def test_no_text_is_empty_or_has_blanks_around_it():
    problems = [
        f"{language}: {message_id} is {text!r}"
        for language, message_id, text in every_text()
        if not text or text != text.strip() or "\n" in text
    ]
    assert not problems


def test_every_text_has_exactly_its_placeholders():
    problems = []
    for language, message_id, text in every_text():
        found = re.findall(r"\{[^{}]*\}", text)
        if found != MESSAGES[message_id][0] or text.count("{") != text.count("}"):
            problems.append(f"{language}: {message_id} has {found}")
        if text.count("{") != len(found) or "%" in text:
            problems.append(f"{language}: {message_id} has a stray brace or percent sign")
    assert not problems


def test_no_text_is_longer_than_its_room_on_the_screen():
    problems = []
    for language, message_id, text in every_text():
        length = visible_length(text.replace("{1}", ""))
        if length > MESSAGES[message_id][1]:
            problems.append(f"{language}: {message_id} has {length} characters")
    assert not problems


def test_every_button_label_fits_into_14_characters():
    problems = []
    for language in languages():
        for message_id in BUTTONS:
            label = texts(language)[message_id]
            if visible_length(label) > 14:
                problems.append(f"{language}: {label}")
    assert not problems


def test_every_text_with_a_name_leaves_the_name_128_bytes():
    problems = []
    for language in languages():
        for message_id in WITH_NAME:
            size = len(texts(language)[message_id].replace("{1}", "").encode())
            if size > TEXT_BYTES - NAME_BYTES:
                problems.append(f"{language}: {message_id} has {size} bytes")
    assert not problems


def test_right_to_left_catalogues_isolate_the_name():
    problems = []
    for language in RIGHT_TO_LEFT:
        for message_id in WITH_NAME:
            if ISOLATED_NAME not in texts(language)[message_id]:
                problems.append(f"{language}: {message_id}")
    assert not problems


def test_bidirectional_controls_stand_only_around_names_of_right_to_left_catalogues():
    problems = []
    for language, message_id, text in every_text():
        rest = text.replace(ISOLATED_NAME, "") if language in RIGHT_TO_LEFT else text
        if BIDI_CONTROLS & set(rest):
            problems.append(f"{language}: {message_id}")
    assert not problems


def test_the_first_letter_gives_every_text_the_direction_of_its_language():
    problems = []
    for language, message_id, text in every_text():
        strong = [unicodedata.bidirectional(char) for char in text]
        first = next(kind for kind in strong if kind in ("L", "R", "AL"))
        if (first != "L") != (language in RIGHT_TO_LEFT):
            problems.append(f"{language}: {message_id}")
    assert not problems


def test_no_other_catalogue_repeats_an_english_sentence():
    english = texts("en")
    problems = [
        f"{language}: {message_id}"
        for language, message_id, text in every_text()
        if language != "en" and message_id not in BUTTONS and text == english[message_id]
    ]
    assert not problems


def test_the_template_holds_every_message_id_with_a_comment_that_states_its_length():
    template = {entry.msgid: entry for entry in entries(source("po", f"{DOMAIN}.pot"))}
    assert set(template) - {""} == set(MESSAGES)
    for message_id, (_, length) in MESSAGES.items():
        comment = " ".join(template[message_id].comments)
        assert re.findall(r"[Aa]t most (\d+) characters", comment) == [str(length)], message_id
        assert template[message_id].text == "", message_id


def test_every_catalogue_carries_the_comments_of_the_template():
    template = {entry.msgid: entry.comments for entry in entries(source("po", f"{DOMAIN}.pot"))}
    problems = [
        f"{language}: {entry.msgid}"
        for language in languages()
        for entry in catalogue(language)
        if entry.comments != template.get(entry.msgid)
    ]
    assert not problems


def test_every_built_catalogue_answers_with_the_texts_of_its_source():
    problems = []
    for language in languages():
        path = built("po", language, "LC_MESSAGES", f"{DOMAIN}.mo")
        if not path.is_file():
            problems.append(f"{language}: {path} was not built")
            continue
        with path.open("rb") as stream:
            translation = gettext.GNUTranslations(stream)
        for message_id in MESSAGES:
            answer = translation.gettext(message_id)
            if answer == message_id or answer != texts(language).get(message_id):
                problems.append(f"{language}: {message_id} answers {answer!r}")
    assert not problems


def test_a_language_with_a_country_is_answered_by_the_nearest_catalogue():
    for request, answer in REQUESTS.items():
        found = gettext.find(DOMAIN, str(built("po")), [request])
        assert found == str(built("po", answer, "LC_MESSAGES", f"{DOMAIN}.mo")), request


def test_the_c_library_answers_in_every_language():
    problems = []
    for language in languages():
        for message_id in ("TV_SID_MIX_NEW_DEVICE_CONNECTED", "COM_SID_CANCEL"):
            answer = run(
                "gettext", "-d", DOMAIN, message_id,
                LANGUAGE=language, TEXTDOMAINDIR=str(built("po")),
            )  # fmt: skip
            assert answer.returncode == 0, answer.stderr
            if answer.stdout != texts(language)[message_id]:
                problems.append(f"{language}: {message_id} answers {answer.stdout!r}")
    assert not problems
