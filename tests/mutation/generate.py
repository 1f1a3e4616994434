"""Finds what can be changed in a C++ file, and writes the file with all changes in it.

Each change (a mutant) has a number, and is in force when `Mutation::on(number)` says so: all mutants
of the project are built at once, and one is chosen when a test program starts.

Works on the text, and leans on the project's formatting: binary operators stand between blanks and
template brackets do not, a body's brace stands behind a blank and an initializer's does not. A mutant
that does not compile is dropped by the caller, who finds it by its line.
"""

import re
from dataclasses import dataclass, field


@dataclass
class Mutant:
    file: str
    before: str  # the condition or statement, blanks squeezed
    after: str
    line: int  # of the original
    nth: int = 1  # of those with the same file and texts
    number: int = 0
    lines: tuple = ()  # where its alternative stands in the written file

    @property
    def key(self):
        return (self.file, self.before, self.after, self.nth)


def squeeze(text):
    return re.sub(r"\s+", " ", text).strip()


def mask(text):
    """The text with comments, literals of characters and preprocessor lines blanked, length kept."""
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9a-zA-Z])\'(?:\\.|[^\'\\\n])*\'|^[ \t]*#[^\n]*',
        re.S | re.M,
    )

    def blank(match):
        found = match.group()
        if found[0] == '"':
            return '"' + "~" * (len(found) - 2) + '"'
        return re.sub(r"[^\n]", " ", found) if found[0] != "'" else "~" * len(found)

    return pattern.sub(blank, text)


@dataclass
class Unit:
    """One condition or statement, with the texts that may stand in its place."""

    start: int
    end: int
    kind: str  # condition, return, expression, statement, value
    alternatives: list = field(default_factory=list)


OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], ">": [">=", "<="], "<=": ["<", ">"], ">=": [">", "<"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "+=": ["-="], "-=": ["+="],
}  # fmt: skip


def altered(text, masked):
    """The texts that differ from `text` in one operator or constant."""
    found = []

    def put(start, end, new):
        found.append(text[:start] + new + text[end:])

    for match in re.finditer(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\||\+=|-=|\+|-)(?=[ \n])", masked):
        for new in OPERATORS[match.group()]:
            put(match.start(), match.end(), new)
    for match in re.finditer(r"\+\+|--", masked):
        put(match.start(), match.end(), "--" if match.group() == "++" else "++")
    for match in re.finditer(r"(?<![\w.])([01])U?(?![\w.])", masked):
        put(match.start(1), match.end(1), "1" if match.group(1) == "0" else "0")
    for match in re.finditer(r"\b(true|false)\b", masked):
        put(match.start(), match.end(), "false" if match.group() == "true" else "true")
    for match in re.finditer(r"!(?=[\w(])", masked):
        put(match.start(), match.end(), "")
    # Two arguments change places.
    for match in re.finditer(r"\w\(([^(){},]+), ([^(){},]+)\)", masked):
        a = text[match.start(1) : match.end(1)]
        b = text[match.start(2) : match.end(2)]
        if a != b:
            put(match.start(1), match.end(2), f"{b}, {a}")
    return found


class Parser:
    def __init__(self, text):
        self.text = text
        self.masked = mask(text)
        self.units = []
        self.pairs = []  # adjacent statements that may change places

    def matching(self, at):
        """The place behind the bracket that closes the one at `at`."""
        depth = 0
        while True:
            c = self.masked[at]
            if c in "([{":
                depth += 1
            elif c in ")]}":
                depth -= 1
                if depth == 0:
                    return at + 1
            at += 1

    def blanks(self, at):
        while at < len(self.masked) and self.masked[at].isspace():
            at += 1
        return at

    def scope(self, at, end):
        """Declarations of a namespace or a class."""
        start = at
        while at < end:
            c = self.masked[at]
            if c in "([":
                at = self.matching(at)
            elif c == ";":
                at = start = at + 1
            elif c == "{":
                close = self.matching(at)
                head = self.masked[start:at]
                if not self.masked[at - 1].isspace():  # an initializer
                    at = close
                    continue
                if re.search(r"\b(namespace|class|struct|union)\b[^()]*$", head) or not head.strip():
                    self.scope(at + 1, close - 1)
                elif "(" in head and not re.search(r"\b(consteval|constexpr|enum|requires)\b", head):
                    self.block(at + 1, close - 1)
                at = start = close
            else:
                at += 1

    def block(self, at, end):
        previous = None
        while True:
            at = self.blanks(at)
            if at >= end:
                return
            count = len(self.units)
            begin = at
            at = self.statement(at)
            unit = self.units[count] if len(self.units) == count + 1 else None
            if unit is None or unit.kind != "statement" or unit.start != begin:
                previous = None
            elif previous is None:
                previous = unit
            else:
                self.pairs.append((previous, unit))
                previous = None

    def statement(self, at):
        """Takes one statement; the place behind it."""
        rest = self.masked[at:]
        if rest[0] == "{":
            close = self.matching(at)
            self.block(at + 1, close - 1)
            return close
        if rest[0] == ";":
            return at + 1
        if match := re.match(r"\[\[\w+\]\]\s*", rest):
            return self.statement(at + match.end())
        if match := re.match(r"(case\b[^;{}]*?|default)\s*:(?!:)\s*", rest):
            return at + match.end()
        if match := re.match(r"(try|do|else)\b\s*", rest):
            at = self.statement(at + match.end())
            if match.group(1) == "do":
                at = self.masked.index(";", at) + 1
            return at
        if match := re.match(r"(if( constexpr)?|while|for|switch|catch)\s*(?=\()", rest):
            open_ = at + match.end()
            close = self.matching(open_)
            self.head(match.group(1), open_ + 1, close - 1)
            at = self.statement(self.blanks(close))
            behind = self.blanks(at)
            if match.group(1).startswith("if") and re.match(r"else\b", self.masked[behind:]):
                at = self.statement(behind)
            return at
        return self.simple(at)

    def head(self, keyword, start, end):
        text = self.masked[start:end]
        if keyword == "for":
            parts = text.split(";")
            if len(parts) != 3 or "{" in text:
                return
            start += len(parts[0]) + 1
            end = start + len(parts[1])
        elif keyword not in ("if", "while"):
            return
        text = self.masked[start:end]
        if re.search(r"[^=!<>]=[^=]|[{;]", text) or not text.strip():
            return  # declares something
        unit = Unit(start, end, "condition")
        unit.alternatives = ["true", "false"] + altered(self.text[start:end], text)
        # Without "&&" and "||" the opposite of a comparison or of a "!" is among those already.
        if re.search(r"&&|\|\|", text) or not re.search(r"==|!| [<>]=? ", text):
            unit.alternatives.append(f"!({self.text[start:end]})")
        self.units.append(unit)

    def simple(self, at):
        start = at
        bodies = []
        while self.masked[at] != ";":
            if self.masked[at] in "([{":
                close = self.matching(at)
                self.lambdas(at, close, bodies)
                at = close
            else:
                at += 1
        at += 1
        text, masked = self.text[start:at], self.masked[start:at]
        inner = list(bodies)
        if match := re.match(r"return\s+(?=\S)(?!;)", masked):
            unit = Unit(start, at, "return")
            value, value_masked = text[match.end() : -1], masked[match.end() : -1]
            if not inner:
                unit.alternatives = altered(value, value_masked)
                if re.search(r" (&&|\|\|) ", value_masked):
                    unit.alternatives.append(f"!({value})")
        elif re.match(
            r"(alignas|using|static|static_assert|thread_local|struct|class|constexpr|return|goto|enum)\b",
            masked,
        ):
            unit = None
        elif match := re.match(r"[^=(]*?[\w>&*]\s+[&*]*\w+(\s=\s+|\{)", masked):
            unit = None  # a declaration
            if not inner and not re.match(r"(auto|[\w:<>]+)( const)?[&*]* ?\[", masked):
                value_start = match.end()
                value_end = len(masked) - 1 - (match.group(1) == "{")
                unit = Unit(start + value_start, start + value_end, "value")
                unit.alternatives = altered(text[value_start:value_end], masked[value_start:value_end])
        elif re.match(r"[\w:<>,]+(\s+const)?\s*[&*]*\s+[&*]*\w+\s*[;(]", masked) and not re.match(
            r"(delete|throw|return|new)\b", masked
        ):
            unit = None  # a declaration without a value, or of a local object
        else:
            unit = Unit(start, at, "statement")
            unit.alternatives = [";"]
            if not inner:
                unit.alternatives += altered(text, masked)
        if inner:
            for body_start, body_end in inner:
                self.block(body_start, body_end)
        if unit and unit.alternatives and not (inner and unit.kind != "statement"):
            if inner:
                return at  # what is inside of it is mutated, not the whole
            self.units.append(unit)
        return at

    def lambdas(self, start, end, bodies):
        """The bodies of lambdas in an expression."""
        for match in re.finditer(r"[)\]](?: mutable| noexcept| ->[ \w:<>*&]+)* \{", self.masked[start:end]):
            open_ = start + match.end() - 1
            close = self.matching(open_)
            if all(not (a <= open_ < b) for a, b in bodies):
                bodies.append((open_ + 1, close - 1))


def written(text, parser, dropped, file, number):
    """The text with every alternative in it but those dropped, and its mutants from `number` on."""
    mutants = []
    seen = {}
    pieces = []  # (start, end, text with marks)

    def mutant(unit_text, after, at):
        entry = Mutant(file, squeeze(unit_text), squeeze(after), text.count("\n", 0, at) + 1)
        key = (entry.before, entry.after)
        seen[key] = seen.get(key, 0) + 1
        entry.nth = seen[key]
        if entry.key in dropped:
            return None
        entry.number = number + len(mutants)
        mutants.append(entry)
        return entry

    def lined(entry, alternative):
        """An alternative on lines of its own, marked so that it is found again."""
        return f"\n\x01{entry.number}\x02{alternative}\x03\n"

    def render(unit):
        original = text[unit.start : unit.end]
        chain = ""
        for after in unit.alternatives:
            entry = mutant(original, after, unit.start)
            if entry is None:
                continue
            test = f"::Mutation::on({entry.number})"
            if unit.kind == "condition":
                chain += f"{test} ? " + lined(entry, f"static_cast<bool>({after})") + " : "
            elif unit.kind == "value":
                chain += f"{test} ? " + lined(entry, f"({after})") + " : "
            elif unit.kind == "return":
                chain += f"if ({test}) " + lined(entry, f"return {after};")
            else:
                chain += f"if ({test}) " + lined(entry, after if after != ";" else "{}") + " else "
        if not chain:
            return original
        if unit.kind == "condition":
            return f"({chain}static_cast<bool>({original}))"
        if unit.kind == "value":
            return f"({chain}({original}))"
        return f"{{ {chain}{original} }}"

    in_pair = {id(unit) for pair in parser.pairs for unit in pair}
    for unit in parser.units:
        if id(unit) not in in_pair:
            pieces.append((unit.start, unit.end, render(unit)))
    for first, second in parser.pairs:
        both = text[first.start : second.end]
        a, b = text[first.start : first.end], text[second.start : second.end]
        entry = mutant(both, f"{b} {a}", first.start)
        inner = render(first) + text[first.end : second.start] + render(second)
        if entry is not None:
            inner = (
                f"{{ if (::Mutation::on({entry.number})) {{ "
                + lined(entry, f"{b} {a}")
                + f" }} else {{ {inner} }} }}"
            )
        pieces.append((first.start, second.end, inner))

    result = []
    at = 0
    for start, end, piece in sorted(pieces):
        assert start >= at, (file, text[start:end])
        result += [text[at:start], piece]
        at = end
    result.append(text[at:])
    marked = "".join(result)
    include = '#include "tests/mutation/MutationSwitch.h"\n'
    if marked.startswith("#pragma once\n"):
        marked = "#pragma once\n" + include + marked[len("#pragma once\n") :]
    else:
        marked = include + marked
    # The marks go, and each mutant learns its lines.
    clean = []
    by_number = {entry.number: entry for entry in mutants}
    line = 1
    for part in re.split(r"(\x01\d+\x02[^\x01\x03]*\x03)", marked):
        if part.startswith("\x01"):
            number_text, part = part[1:-1].split("\x02", 1)
            by_number[int(number_text)].lines = (line, line + part.count("\n"))
        clean.append(part)
        line += part.count("\n")
    return "".join(clean), mutants


def parsed(text):
    parser = Parser(text)
    parser.scope(0, len(text))
    return parser
