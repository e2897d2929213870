"""Finds what can be mutated in a C++ file, from its syntax tree."""

import bisect
import collections
import dataclasses
import hashlib
import re

from clang import cindex
from clang.cindex import CursorKind as K
from clang.cindex import TypeKind as T

KINDS = ("comparison", "connective", "arithmetic", "constant", "condition", "drop", "swap", "argument", "return")

COMPARISONS = {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="]}
ARITHMETIC = {
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "+=": ["-=", "="], "-=": ["+=", "="], "*=": ["/="], "/=": ["*="], "%=": ["*="],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["&"], "|=": ["&="], "&=": ["|="], "^=": ["|="],
}
# Their overloads print, read and join paths.
BUILT_IN_ONLY = {"<<", ">>", "/", "&", "|", "^", "*", "%"}

FUNCTIONS = {K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.CONVERSION_FUNCTION, K.FUNCTION_TEMPLATE}
SCOPES = FUNCTIONS | {K.NAMESPACE, K.CLASS_DECL, K.STRUCT_DECL, K.CLASS_TEMPLATE, K.UNION_DECL, K.ENUM_DECL}
JUMPS = {K.RETURN_STMT, K.BREAK_STMT, K.CONTINUE_STMT, K.GOTO_STMT, K.CXX_THROW_EXPR}
NESTED = {K.IF_STMT, K.FOR_STMT, K.WHILE_STMT, K.DO_STMT, K.CXX_FOR_RANGE_STMT, K.SWITCH_STMT, K.CXX_TRY_STMT,
          K.COMPOUND_STMT}
INTEGERS = {T.CHAR_U, T.UCHAR, T.CHAR16, T.CHAR32, T.USHORT, T.UINT, T.ULONG, T.ULONGLONG, T.CHAR_S, T.SCHAR, T.WCHAR,
            T.SHORT, T.INT, T.LONG, T.LONGLONG}
FLOATS = {T.FLOAT, T.DOUBLE, T.LONGDOUBLE}


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One edit of one file. Start and end are offsets of bytes."""

    path: str
    kind: str
    start: int
    end: int
    line: int
    function: str  # the enclosing function or class, with its namespaces
    context: str  # the lines of the edit, white space collapsed
    before: str
    after: str
    nth: int  # counts the edits of a function that are otherwise alike

    def key(self):
        """What names the mutant however its lines move."""
        return (self.path, self.function, self.kind, self.context, collapse(self.before), collapse(self.after), self.nth)

    def id(self):
        return hashlib.sha1("\0".join(map(str, self.key())).encode()).hexdigest()[:10]

    def apply(self, text):
        """The file's bytes with the edit. Lines keep their numbers, which messages and logs show."""
        lost = text[self.start:self.end].count(b"\n") - self.after.encode().count(b"\n")
        return text[:self.start] + self.after.encode() + b"\n" * max(lost, 0) + text[self.end:]


def collapse(text):
    return " ".join(text.split())


def strip_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", " ", text, flags=re.S).strip()


def plain(type_):
    """A type's name without references and constness; empty where the tree does not know it."""
    canonical = type_.get_canonical()
    if canonical.kind in (T.LVALUEREFERENCE, T.RVALUEREFERENCE):
        canonical = canonical.get_pointee()
    name = re.sub(r"\bconst\b|\bvolatile\b", "", canonical.spelling).strip()
    return "" if canonical.kind in (T.INVALID, T.DEPENDENT, T.VOID, T.OVERLOAD) or "dependent" in name else name


class Finder:
    """Collects the mutants of the file PATH with the bytes TEXT. Arguments are the compiler's."""

    def __init__(self, path, text, arguments, file_name=None):
        self.path, self.text = path, text
        self.found = {}
        self.lines = [0] + [m.end() for m in re.finditer(rb"\n", text)]
        self.name = file_name or path
        index = cindex.Index.create()
        unit = index.parse(self.name, args=arguments, unsaved_files=[(self.name, text.decode())])
        self.errors = [d.spelling for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        for cursor in unit.cursor.get_children():
            if self.here(cursor):
                self.walk(cursor, [], None, [])

    def here(self, cursor):
        return cursor.location.file is not None and cursor.location.file.name == self.name

    def span(self, cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def source(self, start, end):
        return self.text[start:end].decode()

    def of(self, cursor):
        return self.source(*self.span(cursor))

    def add(self, kind, start, end, after, scope):
        """Notes an edit, unless it changes nothing. What a macro expands to has the span of the macro's use, so that an
        edit either takes a use whole or is none: no operator or literal is spelled like one."""
        before = self.source(start, end)
        if collapse(before) == collapse(after) or start >= end:
            return
        self.found[(kind, start, end, after)] = "::".join(scope) or "(file)"

    def mutants(self):
        """Every mutant, in the order of the file."""
        seen = collections.Counter()
        result = []
        for (kind, start, end, after), function in sorted(self.found.items()):
            line = bisect.bisect_right(self.lines, start)
            last = self.text.find(b"\n", end)
            context = collapse(self.text[self.lines[line - 1]:last if last >= 0 else None].decode())
            same = (function, kind, context, self.source(start, end), after)
            result.append(Mutant(self.path, kind, start, end, line, function, context, self.source(start, end), after,
                                 seen[same]))
            seen[same] += 1
        return sorted(result, key=lambda m: (m.start, m.end, KINDS.index(m.kind), m.after))

    # -- the walk

    def walk(self, cursor, scope, function, variables):
        kind = cursor.kind
        if kind in (K.STATIC_ASSERT, K.CXX_BASE_SPECIFIER) or cursor.kind.is_attribute():
            return
        if kind in SCOPES:
            scope = scope + [cursor.spelling] if cursor.spelling else scope
            if kind in FUNCTIONS and cursor.semantic_parent and len(scope) > 1 and scope[-2] != cursor.semantic_parent.spelling:
                # Defined outside its class.
                scope = scope[:-1] + [cursor.semantic_parent.spelling, cursor.spelling]
        if kind in FUNCTIONS or kind == K.LAMBDA_EXPR:
            function = cursor
            own = [c for c in cursor.get_children() if c.kind == K.PARM_DECL]
            variables = (variables if kind == K.LAMBDA_EXPR else []) + [(c.spelling, plain(c.type)) for c in own if c.spelling]
        children = list(cursor.get_children())
        self.operators(cursor, children, scope)
        self.constants(cursor, scope)
        self.conditions(cursor, children, scope)
        self.statements(cursor, children, scope)
        self.arguments(cursor, scope, variables)
        if kind == K.RETURN_STMT and function is not None:
            self.returns(cursor, children, scope, function)
        if kind == K.COMPOUND_STMT:
            variables = list(variables)  # what a block declares ends with it
        for child in children:
            self.walk(child, scope, function, variables)
            if child.kind == K.DECL_STMT:
                for declared in child.get_children():
                    if declared.kind == K.VAR_DECL and declared.spelling:
                        variables.append((declared.spelling, plain(declared.type)))

    def operator(self, cursor, children):
        """The span and the text of a binary operator, and whether it is overloaded; None where there is none."""
        overloaded = False
        if cursor.kind == K.CALL_EXPR:
            if not cursor.spelling.startswith("operator") or len(children) != 3:
                return None
            children, overloaded = [children[0], children[2]], True
        elif cursor.kind not in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR, K.UNEXPOSED_EXPR):
            return None
        if len(children) != 2:
            return None
        start, end = children[0].extent.end.offset, children[1].extent.start.offset
        if not self.span(cursor)[0] <= start <= end <= self.span(cursor)[1]:
            return None
        sign = strip_comments(self.source(start, end))
        if not re.fullmatch(r"[-+*/%<>=!&|^]{1,2}", sign):
            return None
        at = self.text.index(sign.encode(), start)
        return at, at + len(sign), sign, overloaded, children

    def operators(self, cursor, children, scope):
        found = self.operator(cursor, children)
        if found:
            start, end, sign, overloaded, (left, right) = found
            if sign in COMPARISONS:
                for after in COMPARISONS[sign]:
                    self.add("comparison", start, end, after, scope)
            elif sign in ("&&", "||"):
                self.add("connective", start, end, "||" if sign == "&&" else "&&", scope)
                self.add("connective", *self.span(cursor), self.of(left), scope)
                self.add("connective", *self.span(cursor), self.of(right), scope)
            elif sign in ARITHMETIC and not (overloaded and (sign in BUILT_IN_ONLY or "string" in left.type.get_canonical().spelling
                                                            or "string" in right.type.get_canonical().spelling)):
                for after in ARITHMETIC[sign]:
                    self.add("arithmetic", start, end, after, scope)
        if cursor.kind == K.UNARY_OPERATOR and children:
            whole, inner = self.span(cursor), self.span(children[0])
            for sign, after in (("++", "--"), ("--", "++")):
                if self.source(whole[0], inner[0]).strip() == sign:
                    self.add("arithmetic", whole[0], whole[0] + 2, after, scope)
                if self.source(inner[1], whole[1]).strip() == sign:
                    self.add("arithmetic", whole[1] - 2, whole[1], after, scope)
            sign = self.source(whole[0], inner[0]).strip()
            if sign in ("-", "!"):
                self.add("arithmetic" if sign == "-" else "condition", *whole, self.of(children[0]), scope)

    def constants(self, cursor, scope):
        start, end = self.span(cursor)
        text = self.source(start, end)
        if cursor.kind == K.INTEGER_LITERAL:
            match = re.fullmatch(r"(0[xXbB][\da-fA-F']+|[\d']+)([uUlLzZ]*)", text)
            if match:
                digits = match[1].replace("'", "")
                value = int(digits, 8) if re.fullmatch(r"0[0-7]+", digits) else int(digits, 0)
                for other in {value + 1, value - 1 if value > 0 else 1, 0} - {value}:
                    self.add("constant", start, end, f"{other}{match[2]}", scope)
        elif cursor.kind == K.FLOATING_LITERAL:
            match = re.fullmatch(r"([\d'.]+(?:[eE][-+]?\d+)?)([fFlL]?)", text)
            if match:
                value = float(match[1].replace("'", ""))
                for other in {value + 1, value / 2, 0.0} - {value}:
                    self.add("constant", start, end, f"{other!r}{match[2]}", scope)
        elif cursor.kind == K.CXX_BOOL_LITERAL_EXPR and text in ("true", "false"):
            self.add("constant", start, end, "false" if text == "true" else "true", scope)
        elif cursor.kind == K.STRING_LITERAL and re.fullmatch(r'"[^"\\\n]+"', text):
            self.add("constant", start, end, '""', scope)
        elif cursor.kind == K.CHARACTER_LITERAL and re.fullmatch(r"'[^'\\]'", text):
            self.add("constant", start, end, "'#'" if text != "'#'" else "'%'", scope)
        elif cursor.kind == K.DECL_REF_EXPR and cursor.referenced and cursor.referenced.kind == K.ENUM_CONSTANT_DECL:
            names = [c.spelling for c in cursor.referenced.semantic_parent.get_children() if c.kind == K.ENUM_CONSTANT_DECL]
            name = cursor.spelling
            if name in names and len(names) > 1 and text.endswith(name):
                other = names[(names.index(name) + 1) % len(names)]
                self.add("constant", end - len(name), end, other, scope)

    def conditions(self, cursor, children, scope):
        condition = None
        if cursor.kind == K.CONDITIONAL_OPERATOR and children:
            condition = children[0]
        elif cursor.kind in (K.IF_STMT, K.WHILE_STMT, K.FOR_STMT, K.DO_STMT):
            if re.match(r"if\s+constexpr", self.of(cursor)):
                return
            ends = ";" if cursor.kind == K.FOR_STMT else ")"
            for child in children:
                start, end = self.span(child)
                if (child.kind.is_expression() and self.text[:start].rstrip()[-1:] in (b"(", b";")
                        and self.text[end:end + 200].lstrip()[:1] == ends.encode()
                        and not (ends == ";" and self.text[:start].rstrip()[-1:] == b"(")):
                    condition = child
                    break
        if condition is not None:
            self.add("condition", *self.span(condition), f"!({self.of(condition)})", scope)

    def whole_statement(self, cursor):
        """The span with the semicolon, or None for what is no statement that can go."""
        if not (cursor.kind.is_expression() or cursor.kind in NESTED or cursor.kind in JUMPS):
            return None
        start, end = self.span(cursor)
        if cursor.kind in NESTED and self.text[end - 1:end] == b"}":
            return start, end
        rest = self.text[end:]
        gap = len(rest) - len(rest.lstrip())
        if self.text[end - 1:end] == b";":
            return start, end
        return (start, end + gap + 1) if rest[gap:gap + 1] == b";" else None

    def statements(self, cursor, children, scope):
        if cursor.kind == K.COMPOUND_STMT:
            statements = children
        elif cursor.kind in (K.IF_STMT, K.WHILE_STMT, K.FOR_STMT, K.CXX_FOR_RANGE_STMT):
            # A body without braces: what stands behind the head's parenthesis or else.
            statements = [c for c in children if c.kind != K.COMPOUND_STMT and c.kind != K.IF_STMT and
                          re.search(rb"(\)|\belse)\s*$", self.text[max(0, c.extent.start.offset - 200):c.extent.start.offset])
                          and self.whole_statement(c)]
        else:
            return
        for statement in statements:
            span = self.whole_statement(statement)
            if span and not (statement.kind == K.RETURN_STMT and list(statement.get_children())):
                self.add("drop", *span, ";", scope)
        if cursor.kind != K.COMPOUND_STMT:
            return
        for first, second in zip(children, children[1:]):
            one, two = self.whole_statement(first), self.whole_statement(second)
            if one and two and first.kind not in JUMPS and second.kind not in JUMPS:
                a, b = self.source(*one), self.source(*two)
                if collapse(a) != collapse(b):
                    self.add("swap", one[0], two[1], b + self.source(one[1], two[0]) + a, scope)

    def arguments(self, cursor, scope, variables):
        if cursor.kind != K.CALL_EXPR or cursor.spelling.startswith("operator"):
            return
        arguments = [a for a in cursor.get_arguments() if a is not None and a.extent.end.offset > a.extent.start.offset
                     and self.span(cursor)[0] <= a.extent.start.offset <= self.span(cursor)[1]]
        if len(arguments) == 1 and self.span(arguments[0]) == self.span(cursor):
            return  # a conversion that nobody has written
        for argument in arguments:
            name = plain(argument.type)
            text = self.of(argument)
            if not name or "(lambda" in name or text.lstrip().startswith("["):
                continue
            others = [self.of(a) for a in arguments if a is not argument and plain(a.type) == name]
            others += [v for v, kind in variables if kind == name]
            for other in dict.fromkeys(others):
                if not other.lstrip().startswith("[") and other not in text:
                    self.add("argument", *self.span(argument), other, scope)

    def returns(self, cursor, children, scope, function):
        if not children:
            return
        value = children[0]
        start, end = self.span(value)
        text = self.source(start, end)
        in_lambda = function.kind == K.LAMBDA_EXPR
        type_ = (value.type if in_lambda else function.result_type).get_canonical()
        if type_.kind == T.BOOL:
            self.add("return", start, end, "true", scope)
            self.add("return", start, end, "false", scope)
        elif type_.kind in INTEGERS:
            self.add("return", start, end, "0", scope)
            self.add("return", start, end, f"({text}) + 1", scope)
        elif type_.kind in FLOATS:
            self.add("return", start, end, "0", scope)
        elif type_.kind == T.ENUM:
            names = [c.spelling for c in type_.get_declaration().get_children() if c.kind == K.ENUM_CONSTANT_DECL]
            full = type_.spelling
            for name in (names[:1] + names[-1:]) if names else []:
                if not text.endswith(name):
                    self.add("return", start, end, f"{full}::{name}", scope)
        elif type_.kind == T.POINTER:
            if text != "nullptr":
                self.add("return", start, end, "nullptr", scope)
        elif type_.kind not in (T.LVALUEREFERENCE, T.RVALUEREFERENCE, T.VOID) and text.strip() not in ("{}", "nullptr"):
            if in_lambda:
                name = plain(value.type)
                if name and "lambda" not in name:
                    self.add("return", start, end, f"{name}{{}}", scope)
            elif function.result_type.spelling != "auto":
                self.add("return", start, end, "{}", scope)
