"""What can be changed in the product's C++ and QML: one comparison, constant, text, statement or condition at a time.

The sources are read as tokens, not understood. A change that does not compile is found out by the compiler.
"""

import bisect
import dataclasses
import hashlib
import re

TOKEN = re.compile(r"""
    (?P<space>\s+|//[^\n]*|/\*.*?\*/)
  | (?P<text>(?:u8|[uULR])*(?:(?<=R)"(?P<fence>\w*)\(.*?\)(?P=fence)"|"(?:\\.|[^"\\\n])*")(?:_\w+)?|'(?:\\.|[^'\\\n])+')
  | (?P<number>(?:0[xX][\da-fA-F']+|(?:\d[\d']*\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)\w*)
  | (?P<word>[A-Za-z_$]\w*)
  | (?P<sign>===|!==|<=>|[=!<>]=|&&|\|\||\?\?|\?\.|=>|->|::|\+\+|--|[-+*/%&|^]=|.)
""", re.VERBOSE | re.DOTALL)

# Lines that say where things come from, and not what they do.
LINES_WITHOUT_CODE = re.compile(r"^[ \t]*(#(\\\n|[^\n])*|(import|pragma|\.pragma)\b[^\n]*)", re.MULTILINE)
# What stands in the parentheses behind these is read by other programs (moc), by developers only (assertions), or names
# a thing for tests and debuggers.
DECLARING = {"Q_ASSERT", "Q_CLASSINFO", "Q_DECLARE_FLAGS", "Q_ENUM", "Q_PROPERTY", "Q_UNREACHABLE", "Q_UNUSED", "assert",
             "setObjectName", "static_assert"}
# Room in memory that is asked for beforehand, or given back: the same values come of it.
HINTS = {"reserve", "shrink_to_fit", "squeeze"}

COMPARISONS = {"==": "!=", "!=": "==", "===": "!==", "!==": "===", "<": "<=", "<=": "<", ">": ">=", ">=": ">",
               "&&": "||", "||": "&&"}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^="}
NOT_A_STATEMENT = {"auto", "bool", "break", "case", "catch", "class", "const", "constexpr", "continue", "default", "delete", "do",
                   "else", "enum", "explicit", "for", "friend", "function", "goto", "if", "let", "namespace", "new",
                   "private", "protected", "public", "return", "signal", "static", "struct", "switch", "template", "throw",
                   "try", "typedef", "typename", "union", "using", "var", "virtual", "while"}


@dataclasses.dataclass(frozen=True)
class Change:
    file: str
    line: int
    column: int
    begin: int
    end: int
    old: str
    new: str
    source: str  # the line, trimmed

    def __str__(self):
        short = [" ".join(text.split()) for text in (self.old, self.new)]
        old, new = (text if len(text) < 60 else text[:40] + "..." + text[-16:] for text in short)
        return f"{old} -> {new or 'nothing'}"

    def applied(self, source):
        return source[:self.begin] + self.new + source[self.end:]

    def key(self, source):
        """The same for the same change of the same content."""
        return hashlib.sha1(f"{self.file}\0{self.begin}\0{self.new}\0{source}".encode()).hexdigest()


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    begin: int
    end: int
    first: bool  # on its line


def changed_number(text):
    digits = re.match(r"0[xX][\da-fA-F']+|[\d.']+(?:[eE][+-]?\d+)?", text).group()
    plain, suffix = digits.replace("'", ""), text[len(digits):]
    if plain[:2] in ("0x", "0X"):  # a pattern or a channel of a colour, which stays in its range
        return hex(int(plain, 16) ^ 0x40) + suffix
    value = float(plain)
    if value in (0, 1):  # 2 would often be the same as 1: a limit, an order
        return plain.replace(str(int(value)), str(1 - int(value)), 1) + suffix
    return (str(int(value * 1.5) + 1) if plain.isdigit() else f"{value * 1.5 + 1:g}") + suffix


def changed_text(text):
    raw = re.fullmatch(r"""(\w*R"(\w*)\()(.*)(\)\2"\w*)""", text, re.DOTALL)
    prefix, content, suffix = raw.group(1, 3, 4) if raw else re.fullmatch(r"""(\w*["'])(.*)(["']\w*)""", text).groups()
    if re.fullmatch("#([0-9A-Fa-f]{3}){1,2}", content):  # another colour
        return prefix + "#" + "".join(f"{int(digit, 16) ^ 8:X}" for digit in content[1:]) + suffix
    if "'" in prefix:
        return prefix + ("Y" if content == "X" else "X") + suffix
    return prefix + ("" if content else "X") + suffix


class Source:
    def __init__(self, name, source):
        self.name, self.source, self.qml = name, source, name.endswith(".qml")
        self.starts = [0] + [match.end() for match in re.finditer("\n", source)]
        self.tokens = []
        blank = LINES_WITHOUT_CODE.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), source)
        first = True
        for match in TOKEN.finditer(blank):
            if match.lastgroup == "space":
                first = first or "\n" in match.group()
                continue
            self.tokens.append(Token(match.lastgroup, match.group(), *match.span(), first))
            first = False
        # The partner of each bracket, and the bracket around each token.
        self.pair, self.owner, around = {}, [], []
        for index, token in enumerate(self.tokens):
            if token.text in {")", "]", "}"} and around:
                self.pair[index] = around.pop()
                self.pair[self.pair[index]] = index
            self.owner.append(around[-1] if around else -1)
            if token.text in {"(", "[", "{"}:
                around.append(index)

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def left_out(self):
        """The tokens that cannot change what the product does."""
        found = set()
        for index, token in enumerate(self.tokens):
            following = self.text(index + 1)
            if token.text in DECLARING | HINTS and following == "(":
                found.update(range(index, self.pair.get(index + 1, index)))
            elif token.text == "objectName" and following == ":":
                found.add(index + 2)
            elif token.text == "[" and following == "[":  # an attribute
                found.update(range(index, self.pair.get(index, index)))
            elif token.text == "extern":  # the language of a declaration
                found.add(index + 1)
            elif token.text == "enum":
                end = next((at for at in range(index, len(self.tokens)) if self.text(at) in (";", "{")), index)
                found.update(range(index, self.pair.get(end, end)))
        return found

    def change(self, first, last, new):
        begin, end = self.tokens[first].begin, self.tokens[last].end
        line = bisect.bisect_right(self.starts, begin)
        return Change(self.name, line, begin - self.starts[line - 1] + 1, begin, end, self.source[begin:end], new,
                      self.source[self.starts[line - 1]:].split("\n", 1)[0].strip())

    def changes(self):
        left_out = self.left_out()
        found = []
        for index, token in enumerate(self.tokens):
            if index in left_out:
                continue
            new = None
            if token.kind == "number":
                new = changed_number(token.text)
            elif token.kind == "text":
                new = changed_text(token.text)
            elif token.text in ("true", "false"):
                new = "false" if token.text == "true" else "true"
            elif token.text in COMPARISONS and self.is_apart(token):
                new = COMPARISONS[token.text]
            elif token.text == "if":
                found += self.negated_if(index)
            elif token.text == "?":
                found += self.negated_choice(index)
            if new is not None:
                found.append(self.change(index, index, new))
            last = self.statement(index)
            if last is not None and not any(at in left_out and self.text(at) in HINTS | DECLARING
                                            for at in range(index, last + 1)):
                found.append(self.change(index, last, "{}"))
        return sorted(found, key=lambda each: (each.begin, each.end, each.new))

    def is_apart(self, token):
        """Brackets of templates and references stand close to a name, comparisons do not."""
        return self.source[token.begin - 1] in " \n" and self.source[token.end] in " \n"

    def negated_if(self, index):
        opening = index + 1 + (self.text(index + 1) == "constexpr")
        closing = self.pair.get(opening)
        # A condition which declares something has no negation.
        if closing is None or self.text(opening + 1) in {"const", "auto"}:
            return []
        return self.negation(opening, opening + 1, closing - 1, closing)

    def negated_choice(self, index):
        first = index
        while first > 0:
            before, at = self.tokens[first - 1], first - 1
            if before.kind == "sign" and before.text in ")]}" and at in self.pair:
                operand = self.tokens[first].kind in ("word", "number", "text")
                if before.text == "}" or operand:
                    break
                first = self.pair[at]
            elif before.text in ASSIGNMENTS | {"(", "[", "{", ",", ";", ":", "?", "=>", "return", "<<"}:
                break
            else:
                first -= 1
        return self.negation(first, first, index - 1, index - 1)

    def negation(self, begin, first, last, end):
        """The condition from `first` to `last` negated, together with the parentheses that it may stand in. Where it is
        one equality, that has been turned round already."""
        condition = self.source[self.tokens[first].begin:self.tokens[last].end] if first <= last else ""
        here = [self.text(at) for at in range(first, last + 1) if self.owner[at] == self.owner[first]]
        if not condition or {"&&", "||"}.isdisjoint(here) and not {"==", "!=", "===", "!=="}.isdisjoint(here):
            return []
        return [self.change(begin, end, f"(!({condition}))" if begin < first else f"!({condition})")]

    def statement(self, index):
        """The last token of the call or assignment that begins here, told by its form; None where none does."""
        if not self.may_begin_statement(index):
            return None
        counts = {"++", "--"}
        at = index + (self.text(index) in counts | {"*"})
        if self.tokens[at].kind != "word" or self.text(at) in NOT_A_STATEMENT:
            return None
        if self.text(at)[0].isupper() and self.text(at + 1) == "(":  # a constructor's declaration
            return None
        # A name and what leads on from it: members, arguments, places in a list.
        while self.text(at + 1) in {".", "->", "::", "?.", "(", "[", "<"}:
            if self.text(at + 1) == "<":
                if self.is_apart(self.tokens[at + 1]):
                    return None
                at = next((each for each in range(at, len(self.tokens)) if self.text(each) == ">"), at)
            at += 1
            at = self.pair[at] if at in self.pair else at + (self.text(at) != ">")
        at += self.text(at + 1) in counts
        if self.text(at + 1) in ASSIGNMENTS:
            at += 2
            while not self.ends_statement(self.pair.get(at, at)):
                at = self.pair.get(at, at) + 1
            at = self.pair.get(at, at)
        elif self.text(at) != ")" and not {self.text(index), self.text(at)} & counts:
            return None
        return at if self.ends_statement(at) and self.text(at) not in {"default", "delete"} else None

    def may_begin_statement(self, index):
        first, before = self.tokens[index].first, self.text(index - 1)
        if self.text(self.owner[index]) not in {"", "{"}:
            return False
        if before in {";", "{", "}", "else", "do"} or first and before in {")", ":"}:
            return True
        if self.qml and before == ":":
            name = index - 2
            return bool(re.match("on[A-Z]", self.text(name))) and self.text(index + 1) != "=>"
        return self.qml and (before == "=>" or first and self.tokens[index - 1].kind != "sign")

    def ends_statement(self, at):
        if at + 1 >= len(self.tokens) or self.text(at + 1) == ";":
            return True
        token, following = self.tokens[at], self.tokens[at + 1]
        if not self.qml or token.kind == "sign" and token.text not in {")", "]", "}"}:
            return False
        # Without a semicolon it ends with its line, if the next does not begin with an operator.
        return following.text in {")", "]", "}", ","} or following.first and following.kind != "sign"


def changes_of(name, source):
    return Source(name, source).changes()
