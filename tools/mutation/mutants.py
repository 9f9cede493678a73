"""Finds what can be changed in a source file, and writes the file with all its changes in it, each
asleep until the program is asked for it by its number."""

import dataclasses
import re

from clang.cindex import CursorKind as Kind, Index, TypeKind

OPERATORS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"),
    "==": ("!=",), "!=": ("==",), "&&": ("||",), "||": ("&&",),
    "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("*",),
    "<<": (">>",), ">>": ("<<",), "&": ("|",), "|": ("&",), "^": ("&",),
    "=": (), "+=": ("-=", "="), "-=": ("+=", "="), "*=": ("/=", "="), "/=": ("*=", "="),
    "|=": ("&=", "="), "&=": ("|=", "="), "<<=": (">>=",), ">>=": ("<<=",),
}
DECIDES = {"<", "<=", ">", ">=", "==", "!="}  # their change is as good as a negation
NOTHING = re.compile(r"\{\}|nullptr|[0.]+[uUlLfF]*|platform::kNoError|\w+\{\}")
LITERALS = {Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL}


@dataclasses.dataclass
class Edit:
    """One place and what may stand there instead. `form` says how a change is put to sleep: as an
    expression's value or truth, a statement that can be left out, or one put before another."""

    begin: int
    end: int
    form: str
    changes: list  # of texts; of a statement that is left out, of one empty text
    numbers: list = dataclasses.field(default_factory=list)


class Finder:
    def __init__(self, path, text):
        self.path, self.text, self.edits = path, text, {}

    def source(self, node):
        return self.text[node.extent.start.offset:node.extent.end.offset]

    def add(self, node, form, changes, end=None):
        begin, end = node.extent.start.offset, end or node.extent.end.offset
        if changes and end > begin:
            edit = self.edits.setdefault((begin, end, form), Edit(begin, end, form, []))
            edit.changes += [change for change in changes if change not in edit.changes]

    def operands(self, node):
        """The two operands of a binary operator, also of an overloaded comparison."""
        parts = list(node.get_children())
        if node.kind == Kind.CALL_EXPR and node.spelling in ("operator==", "operator!="):
            parts = list(node.get_arguments())
        elif node.kind not in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR):
            return None
        return parts if len(parts) == 2 and all(parts) else None

    def operator(self, node):
        both = self.operands(node)
        if not both:
            return ""
        return self.text[both[0].extent.end.offset:both[1].extent.start.offset].strip()

    def binary(self, node):
        sign = self.operator(node)
        if sign not in OPERATORS:
            return
        left, right = self.operands(node)
        pointers = {part.type.get_canonical().kind for part in (left, right)} == {TypeKind.POINTER}
        self.add(node, "truth" if sign in ("&&", "||") else "value",
                 [f"{self.source(left)} {other} {self.source(right)}"
                  for other in OPERATORS[sign] if not (pointers and other == "+")])

    def condition(self, node):
        if node.kind == Kind.VAR_DECL:  # if (const int error = ...)
            value = list(node.get_children())[-1]
            self.add(value, "value", [f"std::decay_t<decltype({self.source(value)})>{{}}"])
        elif self.operator(node) not in DECIDES and node.kind != Kind.CXX_BOOL_LITERAL_EXPR:
            self.add(node, "truth", [f"!({self.source(node)})"])

    def returned(self, node, function):
        value = next(node.get_children(), None)
        if value is None or NOTHING.fullmatch(self.source(value)):
            return
        kind = value.type.get_canonical().kind
        if kind == TypeKind.VOID:
            self.add(node, "before", ["return;"])
        elif kind == TypeKind.BOOL:
            self.condition(value)
        elif value.kind not in LITERALS and function.result_type.kind != TypeKind.LVALUEREFERENCE:
            lambda_ = function.kind == Kind.LAMBDA_EXPR
            default = f"std::decay_t<decltype({self.source(value)})>{{}}" if lambda_ else "{}"
            self.add(node, "before", [f"return {default};"])

    def statement(self, node):
        removable = node.kind.is_expression() or node.kind in (Kind.BREAK_STMT, Kind.CONTINUE_STMT)
        end = self.text.find(";", node.extent.end.offset) + 1
        text = self.source(node)
        if removable and text and not text.startswith("static_cast<void>") \
                and not self.text[node.extent.end.offset:end - 1].strip():
            self.add(node, "statement", [""], end)

    def literal(self, node):
        text = self.source(node)
        if node.kind == Kind.CXX_BOOL_LITERAL_EXPR:
            self.add(node, "value", [f"!{text}"])
        elif node.kind in LITERALS:
            zero = re.fullmatch(r"[0.]+[uUlLfF]*", text)
            self.add(node, "value",
                     [f"decltype({text})({text} {sign} 1)" for sign in ("+" if zero else "+-")])

    def visit(self, node, parent, function):
        place = node.location.file
        foreign = place and place.name != self.path
        if foreign and node.kind.is_declaration() and parent.kind.is_translation_unit():
            return
        if node.kind.is_declaration() and node.type.kind in (TypeKind.FUNCTIONPROTO,) \
                or node.kind in (Kind.LAMBDA_EXPR, Kind.FUNCTION_TEMPLATE):
            function = node
        if place and place.name == self.path:
            self.look(node, parent, function)
        for child in node.get_children():
            self.visit(child, node, function)

    def look(self, node, parent, function):
        parts = list(node.get_children())
        self.binary(node)
        self.literal(node)
        if node.kind == Kind.UNARY_OPERATOR and parts:
            sign = self.text[node.extent.start.offset:parts[0].extent.start.offset]
            operand = self.source(parts[0])
            self.add(node, "truth" if sign == "!" else "value",
                     {"-": [operand], "!": [operand], "++": ["--" + operand]}.get(sign, []))
        if node.kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.CONDITIONAL_OPERATOR) and parts:
            self.condition(parts[0])
        if node.kind == Kind.RETURN_STMT and function:
            self.returned(node, function)
        if parent.kind in (Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT):
            self.statement(node)


def find(path, text, source, arguments):
    """The edits of the file at `path`, as it is compiled with `source`."""
    unit = Index.create().parse(source, arguments)
    finder = Finder(path, text)
    finder.visit(unit.cursor, unit.cursor, None)
    return sorted(finder.edits.values(), key=lambda edit: (edit.begin, -edit.end, edit.form != "before"))


def asleep(text, edits, awake=None):
    """The text with every edit in it that can be chosen while the program runs; and the change
    `awake`, a number, in plain."""
    def inside(begin, end, inner):
        result, at = [], begin
        while inner:
            edit = inner[0]
            nested = [one for one in inner[1:] if one.begin < edit.end]
            inner = inner[1 + len(nested):]
            result += [text[at:edit.begin], wrapped(edit, nested)]
            at = edit.end
        return "".join(result) + text[at:end]

    def wrapped(edit, nested):
        plain = inside(edit.begin, edit.end, nested)
        if awake in edit.numbers:
            change = edit.changes[edit.numbers.index(awake)]
            forms = {"value": f"({change})", "truth": f"bool({change})", "statement": ";", "before": change}
            return forms[edit.form]
        for number, change in zip(edit.numbers, edit.changes):
            if edit.form == "truth":
                plain = f"(zemoMutant({number}) ? bool({change}) : bool({plain}))"
            elif edit.form == "value":
                plain = f"(zemoMutant({number}) ? ({change}) : ({plain}))"
            elif edit.form == "statement":
                plain = f"if (!zemoMutant({number})) {{ {plain} }}"
            else:
                plain = f"if (zemoMutant({number})) {{ {change} }} {plain}"
        return plain

    return inside(0, len(text), edits)
