"""Finds the places of a source that can be changed: constants, comparisons, orders and calls, by clang's syntax tree."""

from __future__ import annotations

import dataclasses
import pathlib
import re
from collections.abc import Iterator

from clang.cindex import Cursor, CursorKind, Index, SourceRange, Token, TokenKind, TypeKind

OPPOSITE = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&"}

FUNCTIONS = {
    CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR, CursorKind.FUNCTION_TEMPLATE,
    CursorKind.CONVERSION_FUNCTION,
}
VARIABLES = {CursorKind.VAR_DECL, CursorKind.FIELD_DECL, CursorKind.PARM_DECL}
# What stands in these is known when it is compiled.
CONSTANT = {
    CursorKind.STATIC_ASSERT, CursorKind.ENUM_CONSTANT_DECL, CursorKind.TYPE_ALIAS_DECL, CursorKind.TYPEDEF_DECL,
    CursorKind.TYPE_ALIAS_TEMPLATE_DECL,
}
# Statements that may change places with a neighbour.
MOVABLE = {
    CursorKind.CALL_EXPR, CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR, CursorKind.UNARY_OPERATOR,
    CursorKind.IF_STMT, CursorKind.FOR_STMT, CursorKind.WHILE_STMT, CursorKind.CXX_FOR_RANGE_STMT, CursorKind.CXX_TRY_STMT,
}
WHOLE_NUMBERS = {
    TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG, TypeKind.SHORT, TypeKind.USHORT,
    TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.UCHAR,
}


@dataclasses.dataclass(frozen=True, order=True)
class Site:
    """One change: the text from `start` to `end` becomes `changed`, which is written in one line."""

    file: str
    start: int
    end: int
    kind: str
    changed: str  # as it is compiled
    place: str = dataclasses.field(compare=False)  # the function
    line: int = dataclasses.field(compare=False)
    told: str = dataclasses.field(compare=False)

    @property
    def key(self) -> str:
        return f"{self.file} {self.place}: {self.told}"

    @property
    def room(self) -> str:
        return str(pathlib.PurePosixPath(self.file).parent)


@dataclasses.dataclass
class Context:
    """Where a cursor stands."""

    place: str = "-"
    constant: bool = False
    parents: tuple[Cursor, ...] = ()


class Source:
    """A file with its tokens. Offsets count bytes; read as Latin-1, a byte is a character."""

    def __init__(self, root: pathlib.Path, file: str, flags: list[str]) -> None:
        self.file = file
        self.text = (root / file).read_text(encoding="latin-1")
        self.unit = Index.create().parse(str(root / file), args=["-x", "c++", "-std=c++20", *flags])
        wrong = [str(d) for d in self.unit.diagnostics if d.severity >= 3]
        if wrong:
            raise SystemExit(f"{file} cannot be read: {wrong[0]}")
        self.tokens = [t for t in self.unit.get_tokens(extent=self.unit.cursor.extent) if t.kind != TokenKind.COMMENT]
        self.starts = [t.extent.start.offset for t in self.tokens]

    def between(self, start: int, end: int) -> list[Token]:
        import bisect

        first = bisect.bisect_left(self.starts, start)
        last = bisect.bisect_left(self.starts, end)
        return self.tokens[first:last]

    def line(self, start: int, end: int) -> str:
        """What stands there, without comments and in one line."""
        words: list[str] = []
        previous = start
        for token in self.between(start, end):
            if words and token.extent.start.offset > previous:
                words.append(" ")
            words.append(token.spelling)
            previous = token.extent.end.offset
        return "".join(words)

    def end_of_statement(self, cursor: Cursor) -> int:
        end = cursor.extent.end.offset
        following = self.between(end, end + 200)
        return following[0].extent.end.offset if following and following[0].spelling == ";" else end


def span(cursor: Cursor | SourceRange) -> tuple[int, int]:
    extent = cursor if isinstance(cursor, SourceRange) else cursor.extent
    return extent.start.offset, extent.end.offset


def inside(cursor: Cursor, kinds: set[CursorKind] | None = None) -> Iterator[Cursor]:
    yield from (c for c in cursor.get_children() if kinds is None or c.kind in kinds)


def stripped(cursor: Cursor) -> Cursor:
    """Without the conversions that are not written."""
    while cursor.kind in (CursorKind.UNEXPOSED_EXPR,):
        children = list(cursor.get_children())
        if len(children) != 1 or span(children[0]) != span(cursor):
            break
        cursor = children[0]
    return cursor


def other_number(text: str) -> str | None:
    match = re.fullmatch(r"([0-9']+|0[xX][0-9a-fA-F']+)([uUlLzZ]*)", text)
    if match:
        value = int(match[1].replace("'", ""), 0)
        return f"{hex(value ^ 1) if match[1][:2] in ('0x', '0X') else value + 1}{match[2]}"
    match = re.fullmatch(r"[0-9.]+([eE][-+]?[0-9]+)?([fFlL]?)", text)
    if match:
        return f"1.0{match[2]}" if float(text.rstrip("fFlL")) == 0 else f"(2 * {text})"
    return None


class Finder:
    """Walks over one source. `left_out` counts what is known when it is compiled, where no choice can be made at run time."""

    def __init__(self, source: Source) -> None:
        self.source = source
        self.sites: dict[tuple[int, int, str], Site] = {}
        self.left_out = 0

    def run(self) -> list[Site]:
        for cursor in self.source.unit.cursor.get_children():
            place = cursor.location.file
            if place is not None and place.name.endswith(self.source.file):
                self.walk(cursor, Context())
        return sorted(self.sites.values())

    def add(self, context: Context, kind: str, start: int, end: int, changed: str, told: str) -> None:
        if context.constant:
            self.left_out += 1
            return
        line = self.source.text.count("\n", 0, start) + 1
        self.sites.setdefault((start, end, changed),
                              Site(self.source.file, start, end, kind, changed, context.place, line, told))

    def walk(self, cursor: Cursor, context: Context) -> None:
        context = self.context_of(cursor, context)
        visit = getattr(self, f"visit_{cursor.kind.name.lower()}", None)
        if visit is not None:
            visit(cursor, context)
        below = dataclasses.replace(context, parents=(*context.parents, cursor))
        for child in cursor.get_children():
            self.walk(child, below)

    def context_of(self, cursor: Cursor, context: Context) -> Context:
        if cursor.kind in FUNCTIONS:
            head = self.source.line(cursor.extent.start.offset, cursor.location.offset)
            return dataclasses.replace(context, place=cursor.spelling.split("<")[0], constant="constexpr" in head.split())
        if cursor.kind in VARIABLES:
            head = self.source.line(cursor.extent.start.offset, cursor.location.offset).split()
            return dataclasses.replace(context, constant=context.constant or "constexpr" in head)
        if cursor.kind in CONSTANT:
            return dataclasses.replace(context, constant=True)
        if cursor.kind == CursorKind.LAMBDA_EXPR:
            return dataclasses.replace(context, constant=False)
        parent = context.parents[-1] if context.parents else None
        if parent is not None and self.is_constant_part(parent, cursor):
            return dataclasses.replace(context, constant=True)
        return context

    def is_constant_part(self, parent: Cursor, cursor: Cursor) -> bool:
        """The value of a case, the size of an array, an argument of a template."""
        if parent.kind == CursorKind.CASE_STMT:
            return next(parent.get_children()) == cursor
        if parent.kind in VARIABLES and cursor.kind.is_expression():
            before = self.source.line(parent.location.offset, cursor.extent.start.offset)
            return cursor.extent.start.offset < parent.location.offset or before.endswith("[")
        return False

    # Constants

    def visit_integer_literal(self, cursor: Cursor, context: Context) -> None:
        start, end = span(cursor)
        text = self.source.line(start, max(end, start + 1))
        if re.fullmatch(r"[A-Z][A-Z_]+", text):  # a status code
            self.add(context, "constant", start, start + len(text), f"({text} - 1)", f"{text} -> {text} - 1")
        else:
            self.number(context, start, end, text)

    visit_floating_literal = visit_integer_literal

    def number(self, context: Context, start: int, end: int, text: str) -> None:
        other = other_number(text)
        if other is None:
            return
        around = self.around(context, start, end)
        self.add(context, "constant", start, end, other, f"{around}: {text} -> {other.strip('()')}")

    def around(self, context: Context, start: int, end: int) -> str:
        """The expression or declaration that a constant stands in, so that it can be told from others."""
        best = self.source.line(start, end)
        for parent in reversed(context.parents):
            if not parent.kind.is_expression() and parent.kind not in VARIABLES | {CursorKind.RETURN_STMT}:
                break
            text = self.source.line(*span(parent))
            if len(text) > 60:
                break
            best = text
        return best

    def visit_cxx_bool_literal_expr(self, cursor: Cursor, context: Context) -> None:
        start, end = span(cursor)
        text = self.source.line(start, end)
        if text in ("true", "false"):
            other = "false" if text == "true" else "true"
            self.add(context, "constant", start, end, other, f"{self.around(context, start, end)}: {text} -> {other}")

    def visit_string_literal(self, cursor: Cursor, context: Context) -> None:
        start, end = span(cursor)
        text = self.source.line(start, end)
        if text.startswith('"'):
            self.add(context, "constant", start, end, f'"?{text[1:]}', f'{text} -> "?{text[1:]}')

    def visit_decl_ref_expr(self, cursor: Cursor, context: Context) -> None:
        meant = cursor.referenced
        if meant is None:
            return
        start, end = span(cursor)
        text = self.source.line(start, end)
        if meant.kind == CursorKind.ENUM_CONSTANT_DECL:
            changed = f"static_cast<decltype({text})>(static_cast<int>({text}) + 1)"
            self.add(context, "constant", start, end, changed, f"{self.around(context, start, end)}: {text} -> {text} + 1")
        elif meant.kind == CursorKind.VAR_DECL and self.is_constexpr(meant):
            self.named_constant(cursor, context, text)

    @staticmethod
    def is_constexpr(variable: Cursor) -> bool:
        words = [t.spelling for t in variable.get_tokens()]
        return variable.spelling in words and "constexpr" in words[: words.index(variable.spelling)]

    def named_constant(self, cursor: Cursor, context: Context, text: str) -> None:
        kind = cursor.type.get_canonical().kind
        start, end = span(cursor)
        if kind in WHOLE_NUMBERS:
            changed = f"static_cast<std::remove_cv_t<decltype({text})>>({text} + 1)"
            told = f"{text} + 1"
        elif kind in (TypeKind.FLOAT, TypeKind.DOUBLE) or "duration" in cursor.type.get_canonical().spelling:
            changed = told = f"2 * {text}"
        else:
            return
        self.add(context, "constant", start, end, changed, f"{self.around(context, start, end)}: {text} -> {told}")

    # Comparisons

    def visit_binary_operator(self, cursor: Cursor, context: Context) -> None:
        children = list(cursor.get_children())
        if len(children) == 2:
            self.operator(cursor, context, children[0].extent.end.offset, children[1].extent.start.offset)

    def operator(self, cursor: Cursor, context: Context, after: int, before: int) -> None:
        start, end = span(cursor)
        for token in self.source.between(after, before):
            if token.spelling in OPPOSITE:
                place = token.extent.start.offset
                behind = place + len(token.spelling)
                changed = f"{self.source.line(start, place)} {OPPOSITE[token.spelling]} {self.source.line(behind, end)}"
                self.add(context, "comparison", start, end, changed, f"{shortened(self.source.line(start, end))} -> "
                         f"{shortened(self.source.line(start, place), tail=True)} {OPPOSITE[token.spelling]}")
                return

    def visit_unary_operator(self, cursor: Cursor, context: Context) -> None:
        start, end = span(cursor)
        text = self.source.line(start, end)
        if text.startswith("!") and not text.startswith("!="):
            self.add(context, "comparison", start, end, f"static_cast<bool>({text[1:]})", f"{text} -> {text[1:]}")

    # Orders and calls

    def visit_call_expr(self, cursor: Cursor, context: Context) -> None:
        children = list(cursor.get_children())
        if cursor.spelling.startswith("operator") and len(children) == 3:
            self.operator(cursor, context, children[0].extent.end.offset, children[2].extent.start.offset)
            return
        self.chain(cursor, context)
        self.arguments(cursor, context)

    @staticmethod
    def link(cursor: Cursor) -> Cursor | None:
        """What a member function is called on, where the call gives the same type again."""
        if cursor.kind != CursorKind.CALL_EXPR:
            return None
        children = list(cursor.get_children())
        if not children or children[0].kind != CursorKind.MEMBER_REF_EXPR:
            return None
        base = next(children[0].get_children(), None)
        if base is None or stripped(base).kind not in (CursorKind.CALL_EXPR, CursorKind.DECL_REF_EXPR):
            return None
        base = stripped(base)

        def plain(cursor: Cursor) -> str:
            return cursor.type.get_canonical().spelling.replace("&", "").replace("const ", "").strip()

        return base if plain(base) == plain(cursor) else None

    def chain(self, cursor: Cursor, context: Context) -> None:
        base = self.link(cursor)
        if base is None:
            return
        start, end = span(cursor)
        base_end = base.extent.end.offset
        last = self.source.line(base_end, end)
        self.add(context, "call", start, end, self.source.line(start, base_end), f"{shortened(last)} left out")
        below = self.link(base)
        if below is not None:
            first = self.source.line(below.extent.end.offset, base_end)
            changed = self.source.line(start, below.extent.end.offset) + last + first
            self.add(context, "order", start, end, changed, f"{shortened(first)}{shortened(last)} -> {shortened(last)}{shortened(first)}")

    def arguments(self, cursor: Cursor, context: Context) -> None:
        start, end = span(cursor)
        given = [a for a in cursor.get_arguments() if a is not None]
        for first, second in zip(given, given[1:]):
            one, other = self.source.line(*span(first)), self.source.line(*span(second))
            same = stripped(first).type.get_canonical().spelling == stripped(second).type.get_canonical().spelling
            if not same or one == other or not one or not other or second.extent.end.offset > end:
                continue
            changed = (self.source.line(start, first.extent.start.offset) + other + ", " + one
                       + self.source.line(second.extent.end.offset, end))
            self.add(context, "order", start, end, changed,
                     f"{shortened(self.source.line(start, end))}: {one}, {other} -> {other}, {one}")

    def visit_compound_stmt(self, cursor: Cursor, context: Context) -> None:
        statements = list(cursor.get_children())
        for statement in statements:
            self.leave_out(statement, context)
        for first, second in zip(statements, statements[1:]):
            if self.movable(first) and self.movable(second) and depend(effects_of(first), effects_of(second)):
                self.swap(first, second, context)

    def visit_if_stmt(self, cursor: Cursor, context: Context) -> None:
        for statement in list(cursor.get_children())[1:]:
            self.leave_out(statement, context)

    def visit_while_stmt(self, cursor: Cursor, context: Context) -> None:
        self.leave_out(list(cursor.get_children())[-1], context)

    visit_for_stmt = visit_cxx_for_range_stmt = visit_while_stmt

    def movable(self, statement: Cursor) -> bool:
        return stripped(statement).kind in MOVABLE or self.is_bare_expression(statement)

    def is_bare_expression(self, statement: Cursor) -> bool:
        if not statement.kind.is_expression():
            return False
        end = statement.extent.end.offset
        return self.source.end_of_statement(statement) > end

    def leave_out(self, statement: Cursor, context: Context) -> None:
        if not self.is_bare_expression(statement):
            return
        start, end = span(statement)
        self.add(context, "call", start, end, "void()", f"{shortened(self.source.line(start, end))} left out")

    def swap(self, first: Cursor, second: Cursor, context: Context) -> None:
        start, end = first.extent.start.offset, self.source.end_of_statement(second)
        one = self.source.line(start, self.source.end_of_statement(first))
        other = self.source.line(second.extent.start.offset, end)
        self.add(context, "order", start, end, f"{other} {one}", f"{shortened(one)} after {shortened(other)}")


@dataclasses.dataclass
class Effects:
    """What a statement does, as far as its neighbour may mind."""

    uses: set[str] = dataclasses.field(default_factory=set)
    writes: set[str] = dataclasses.field(default_factory=set)
    leaves: bool = False  # the function or the loop
    acts: bool = False  # outside of what it names, as src/ does: it sends, waits or tells


def depend(first: Effects, second: Effects) -> bool:
    """Whether the order of two statements can make a difference."""
    if first.acts and second.acts:
        return True
    if first.leaves or second.leaves:
        return bool(first.leaves and second.leaves or first.writes or second.writes or first.acts or second.acts)
    return bool(first.writes & second.uses or second.writes & first.uses)


def effects_of(statement: Cursor) -> Effects:
    effects = Effects()
    for cursor in statement.walk_preorder():
        kind = cursor.kind
        if kind in (CursorKind.RETURN_STMT, CursorKind.CXX_THROW_EXPR, CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT):
            effects.leaves = True
        elif kind in (CursorKind.DECL_REF_EXPR, CursorKind.MEMBER_REF_EXPR):
            effects.uses.add(cursor.referenced.get_usr() if cursor.referenced else cursor.spelling)
        elif kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR, CursorKind.UNARY_OPERATOR):
            effects.writes |= written(cursor)
        elif kind == CursorKind.CALL_EXPR:
            effects.writes |= {target(argument) for argument in (*cursor.get_arguments(), *cursor.get_children()) if argument} - {""}
            place = cursor.referenced.location.file if cursor.referenced else None
            effects.acts |= place is not None and "src" in pathlib.PurePath(place.name).parts and "scan" not in pathlib.PurePath(place.name).parts
    return effects


def written(operator: Cursor) -> set[str]:
    children = list(operator.get_children())
    if not children:
        return set()
    behind = children[0].extent.end.offset
    tokens = [t.spelling for t in operator.get_tokens() if t.extent.start.offset >= behind or len(children) == 1]
    changes = tokens[:1] and (tokens[0] in ("++", "--") or tokens[-1] in ("++", "--") or
                              tokens[0].endswith("=") and tokens[0] not in ("==", "!=", "<=", ">="))
    return {target(children[0], by_call=False)} - {""} if changes else set()


def target(cursor: Cursor, by_call: bool = True) -> str:
    """What is changed through an expression, if anything: the innermost name that it goes by. Numbers are passed by their value."""
    while True:
        if cursor.kind in (CursorKind.DECL_REF_EXPR, CursorKind.MEMBER_REF_EXPR):
            type_ = cursor.type.get_canonical()
            meant = cursor.referenced
            if by_call and (type_.kind in WHOLE_NUMBERS or type_.kind in (TypeKind.FLOAT, TypeKind.DOUBLE, TypeKind.BOOL)):
                return ""
            if meant is None or type_.is_const_qualified() or not meant.kind.is_declaration() or meant.kind in FUNCTIONS:
                below = next(cursor.get_children(), None)
                if meant is not None and meant.kind in FUNCTIONS and below is not None and not meant.is_const_method():
                    cursor = below
                    continue
                return ""
            return str(meant.get_usr())
        below = next(cursor.get_children(), None)
        if below is None:
            return ""
        cursor = below


def shortened(text: str, tail: bool = False, length: int = 60) -> str:
    if len(text) <= length:
        return text
    return "..." + text[-length:] if tail else text[:length] + "..."


def sites_of(root: pathlib.Path, file: str, flags: list[str]) -> tuple[list[Site], int]:
    finder = Finder(Source(root, file, flags))
    return finder.run(), finder.left_out
