"""Quoting: the rule every client shares with the engine, and round trips of
hostile strings through a real application."""

import pytest

from vantix import words

HOSTILE = [
    "",
    " ",
    "#comment",
    "a#b",
    'say "hi"',
    "back\\slash",
    '\\"',
    "tab\there",
    "line\nbreak\r\n",
    "nbsp\u00a0ideographic\u3000line\u2028para\u2029",
    "zero\u200bwidth\u200dbom\ufeffshy\u00ad",
    "\x00\x01\x1f\x7f\x85\x9f",
    "emoji \U0001F600 and \U0001D173",
    "日本語",
    "x" * 2000,
    '"',
    '""',
    "\\u0041",
]


@pytest.mark.parametrize(
    "word, quoted",
    [
        ("plain", "plain"),
        ("", '""'),
        ("#x", '"#x"'),
        ("a#", "a#"),
        ("a b", '"a b"'),
        ('q"', '"q\\""'),
        ("a\\b", "a\\b"),
        ('a\\b c', '"a\\\\b c"'),
        ("a\tb\nc\rd", '"a\\tb\\nc\\rd"'),
        ("a\u00a0b", '"a\\u00a0b"'),
        ("a\u200bb", '"a\\u200bb"'),
        ("\x7f", '"\\u007f"'),
        ("é", "é"),
        ("\U0001F600", "\U0001F600"),
        # Outside the BMP Qt sees two surrogates, which need nothing.
        ("\U000E0001", "\U000E0001"),
    ],
)
def test_quote_follows_the_shared_rule(word, quoted):
    assert words.quote(word) == quoted


@pytest.mark.parametrize("word", HOSTILE)
def test_split_gives_back_what_join_wrote(word):
    line = words.join(["set", "timesettings", "timeZone", word])
    assert "\n" not in line and "\r" not in line
    assert words.split(line) == ["set", "timesettings", "timeZone", word]


def test_split_reads_lines_as_the_engine_does():
    assert words.split('  get\u3000battery1\tfuelGauge  ') == ["get", "battery1", "fuelGauge"]
    assert words.split('a"b c"d ""') == ["ab cd", ""]
    assert words.split('"\\ud83d\\ude00"') == ["\U0001F600"]
    assert words.split("a\\b") == ["a\\b"]
    # \x1c..\x1f are blanks to Python's str.split(), not to Qt.
    assert words.split("a\x1cb") == ["a\x1cb"]
    for line, message in [('"open', "a quote is not closed"), ('"a\\', "a backslash ends the line inside quotes"),
                          ('"\\u12"', "\\u needs four hex digits")]:
        with pytest.raises(words.WordsError, match=message.replace("\\", "\\\\")):
            words.split(line)


def test_hostile_strings_survive_the_application(client):
    for word in HOSTILE:
        assert client.set("timesettings", "timeZone", word) == word
        assert client.get("ITimeSettings", "timeZone") == word
    assert client.set("timesettings", "urlList", ["a b", "ü\u00a0v", ""]) == ["a b", "ü\u00a0v", ""]
