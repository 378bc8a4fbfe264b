"""Where a source can be changed in small, and what would stand there instead.

Offsets are bytes. Texts are kept as Latin-1, in which each byte is a character; `readable` gives them back as UTF-8.
"""
from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Iterator

from clang.cindex import Cursor, CursorKind, TranslationUnit, TypeKind

ASK = "@ASK@"  # stands for the question whether the change holds

COMPARISONS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
OTHERS = {"&&": ("logic", "||"), "||": ("logic", "&&"), "+": ("number", "-"), "-": ("number", "+")}
FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
             CursorKind.CONVERSION_FUNCTION, CursorKind.FUNCTION_TEMPLATE}
SCOPES = {CursorKind.NAMESPACE, CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL, CursorKind.LINKAGE_SPEC,
          CursorKind.UNEXPOSED_DECL}
NUMBER = re.compile(r"(0[xX][0-9a-fA-F']+|[0-9][0-9']*(\.[0-9']*)?([eE][+-]?[0-9]+)?)[uUlLfFzZ]*")
# Left out or changed, these make no difference that a test should see.
UNSEEN = re.compile(r"^(Trace\w*|reserve|shrink_to_fit|q(Debug|Info|Warning)|printf|assert)$")


@dataclass(frozen=True)
class Site:
    path: str
    line: int
    column: int
    start: int
    end: int
    kind: str  # compare, logic, number, call or swap
    instead: str  # with ASK
    what: str  # for the list
    source: str  # the line as it stands


def readable(text: str) -> str:
    return text.encode("latin-1").decode("utf-8", "replace")


class Collector:
    """Walks through the functions of one source.

    What comes out of a macro has the extent of the macro's use, and so not the text that is looked for.
    """

    def __init__(self, unit: TranslationUnit, path: str, text: str) -> None:
        self.path, self.text = path, text
        self.code = re.sub(r'("(?:\\.|[^"\\\n])*")|//[^\n]*|/\*.*?\*/',
                           lambda m: m[0] if m[1] else re.sub(r"[^\n]", " ", m[0]), text, flags=re.S)
        self.sites: dict[tuple[int, int, str], Site] = {}
        for cursor in unit.cursor.get_children():
            if cursor.location.file and cursor.location.file.name == path:
                self.declaration(cursor)

    def declaration(self, cursor: Cursor) -> None:
        if cursor.kind in FUNCTIONS:
            for child in cursor.get_children():
                head = self.text[cursor.extent.start.offset:child.extent.start.offset]
                if child.kind == CursorKind.COMPOUND_STMT and not re.search(r"\b(constexpr|consteval)\b", head):
                    self.body(child)
        elif cursor.kind in SCOPES:
            for child in cursor.get_children():
                self.declaration(child)

    def body(self, cursor: Cursor) -> None:
        kind = cursor.kind
        if kind == CursorKind.STATIC_ASSERT or kind == CursorKind.CALL_EXPR and UNSEEN.match(cursor.spelling):
            return
        if kind == CursorKind.DECL_STMT and re.search(r"\bconstexpr\b", self.of(cursor)):
            return
        children = list(cursor.get_children())
        overloaded = kind == CursorKind.CALL_EXPR and cursor.spelling.startswith("operator")
        if kind == CursorKind.BINARY_OPERATOR or overloaded:
            self.binary(cursor, children)
        elif kind == CursorKind.CALL_EXPR:
            self.call(cursor)
            self.arguments(cursor)
        elif kind == CursorKind.UNARY_OPERATOR and self.of(cursor).startswith("!"):
            inner = self.of(cursor)[1:]
            self.add(cursor, "logic", f"({ASK} ? !!({inner}) : !({inner}))", "the negation is dropped")
        elif kind in (CursorKind.INTEGER_LITERAL, CursorKind.FLOATING_LITERAL) and NUMBER.fullmatch(self.of(cursor)):
            number = self.of(cursor)
            self.add(cursor, "number", f"({ASK} ? {number} + 1 : {number})", f"{number} + 1 for {number}")
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR and self.of(cursor) in ("true", "false"):
            truth = self.of(cursor) == "true"
            instead, what = (f"(!{ASK})", "false for true") if truth else (f"({ASK})", "true for false")
            self.add(cursor, "number", instead, what)
        for child in children:
            self.body(child)

    def binary(self, cursor: Cursor, children: list[Cursor]) -> None:
        if len(children) < 2:
            return
        left, right = children[0], children[-1]
        operator = self.code[left.extent.end.offset:right.extent.start.offset].strip()
        former = f"({self.of(left)}) {operator} ({self.of(right)})"
        changes = [("compare", new) for new in COMPARISONS.get(operator, ())]
        if operator in OTHERS and cursor.kind == CursorKind.BINARY_OPERATOR:
            changes.append(OTHERS[operator])
        for kind, new in changes:
            latter = f"({self.of(left)}) {new} ({self.of(right)})"
            self.add(cursor, kind, f"({ASK} ? {latter} : {former})", f"{new} for {operator}")

    def call(self, cursor: Cursor) -> None:
        """A statement that is a call and nothing else."""
        start, end = span(cursor)
        before = self.code[:start].rstrip()
        if cursor.spelling not in self.of(cursor):
            return  # a macro
        if self.code[end:].lstrip().startswith(";") and re.search(r"([;{}):]|\b(else|do))$", before):
            self.add(cursor, "call", f"({ASK} ? void() : void({self.of(cursor)}))", f"no call of {cursor.spelling}")

    def arguments(self, cursor: Cursor) -> None:
        if cursor.spelling in ("swap", "min", "max"):
            return
        given = list(cursor.get_arguments())
        for first, second in zip(given, given[1:]):
            one, other = self.of(first), self.of(second)
            start, end = first.extent.start.offset, second.extent.end.offset
            between = self.code[first.extent.end.offset:second.extent.start.offset].strip()
            if between == "," and one != other and plain(first) and plain(first) == plain(second):
                instead = f"({ASK} ? ({other}) : ({one})), ({ASK} ? ({one}) : ({other}))"
                self.add_text(start, end, first.extent.start.line, "swap", instead, f"{other}, {one} swapped")

    def of(self, cursor: Cursor) -> str:
        start, end = span(cursor)
        return self.text[start:end]

    def add(self, cursor: Cursor, kind: str, instead: str, what: str) -> None:
        self.add_text(*span(cursor), cursor.extent.start.line, kind, instead, what)

    def add_text(self, start: int, end: int, line: int, kind: str, instead: str, what: str) -> None:
        if start < end:
            source = self.text.split("\n")[line - 1].strip()
            what = re.sub(r"\s+", " ", what)
            column = start - self.text.rfind("\n", 0, start)
            site = Site(self.path, line, column, start, end, kind, instead, readable(what), readable(source))
            self.sites[start, end, what] = site


def span(cursor: Cursor) -> tuple[int, int]:
    return cursor.extent.start.offset, cursor.extent.end.offset


def plain(argument: Cursor) -> str | None:
    """The type of numbers, truths and enums; None for any other."""
    kind = argument.type.get_canonical()
    if kind.kind == TypeKind.ENUM or TypeKind.BOOL.value <= kind.kind.value <= TypeKind.LONGDOUBLE.value:
        return kind.spelling.replace("const ", "")
    return None


def collect(unit: TranslationUnit, path: str, text: str) -> list[Site]:
    found = Collector(unit, path, text).sites
    return [found[key] for key in sorted(found)]


def apply(text: str, changes: Iterator[tuple[int, Site]]) -> str:
    """The text with each change (number and site, no two overlapping) beside what it replaces."""
    for number, site in sorted(changes, key=lambda change: -change[1].start):
        text = text[:site.start] + site.instead.replace(ASK, f"zelvar_mutant::On({number})") + text[site.end:]
    return text
