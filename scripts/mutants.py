"""Mutants of C++ lines: which lines can carry one, what it is, and where its line is in another state of the tree."""

import collections
import json
import os
import pathlib
import random
import re

# A group of folders gets a share of the mutants by its lines: name, paths, the test programs that run first.
GROUPS = [
    ("platform/foundation", r"platform/foundation/", r"foundation"),
    ("platform/graphics", r"platform/graphics/", r"graphics"),
    ("platform/media", r"platform/media/", r"media-platform|platform-media"),
    ("platform/uikit", r"platform/uikit/", r"uikit"),
    ("article/list", r"article/list/", r"ostrel-article-tests|article-list"),
    ("article/detail", r"article/detail/", r"article-detail"),
    ("article/editor", r"article/editor/", r"article-(editor|save)"),
    ("article/media", r"article/media/", r"article-media"),
    ("article/server", r"article/server/", r"ostrel-article-tests|integration"),
    ("article/records", r"article/((records|resources)/|[^/]*$)", r"ostrel-article-tests|article-detail"),
    ("backends/headless", r"backends/headless/", r"headless"),
    ("backends/qt", r"backends/qt/", r"qt"),
    ("backends/ffmpeg", r"backends/ffmpeg/", r"ffmpeg"),
    ("serverframework", r"(serverframework|ostrelserver)/", r"serverframework"),
    ("articleserver", r"articleserver/", r"articleserver"),
    ("tools", r"tools/", r"convert"),
    ("reader", r"reader/", r"reader"),
]
LEFT_OUT = re.compile(r"articleserver/sample/|reader/(main\.cpp|tour/)")
LEAST_PER_GROUP = 2

COMMENT_OR_LITERAL = re.compile(
    r"//[^\n]*|/\*.*?\*/"
    r'|R"(?P<end>[^(]*)\(.*?\)(?P=end)"|"(?:\\.|[^"\\\n])*"'
    # Not the digit separator of 1'000.
    r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'", re.DOTALL)


def masked(text):
    """The text with comments as spaces and the insides of literals as underscores; every offset stays."""
    def mask(match):
        found = match.group()
        if found.startswith("/"):
            return re.sub(r"[^\n]", " ", found)
        return found[0] + re.sub(r"[^\n]", "_", found[1:-1]) + found[-1]

    return COMMENT_OR_LITERAL.sub(mask, text)


class Source:
    """A file by its lines: `code` has them masked, `plain` without comments and with single spaces, for comparing."""

    def __init__(self, path, text):
        self.path = path
        self.lines = text.split("\n")
        self.code = masked(text).split("\n")
        self.plain = [" ".join("".join(a if b != " " else " " for a, b in zip(line, code)).split())
                      for line, code in zip(self.lines, self.code)]

    def around(self, index, count):
        """The nearest lines with code before and after a line, at most `count` each way."""
        after = self.plain[index + 1:index + 1 + 4 * count]
        return [line for line in self.plain[:index] if line][-count:] + [line for line in after if line][:count]


def balanced(code):
    depth = 0
    for character in code:
        depth += (character in "([{") - (character in ")]}")
        if depth < 0:
            return False
    return depth == 0


# Lines that hold a condition or a statement as a whole, which is `core`.
SHAPES = [
    ("condition", re.compile(r"(?:\} )?(?:else )?(?:if|while) \((?P<core>.*)(?:\) \{|\);)")),
    ("loop", re.compile(r"for \([^;]*; (?P<core>[^;]+); [^;]*\) .*[{;]")),
    ("statement", re.compile(r"[^{}]*\) (?:(?:const|noexcept|override|final|mutable|-> [\w:<>*&]+) )*"
                             r"\{ (?P<core>.*;) \};?")),
    ("statement", re.compile(r"(?:case [\w:]+|default): (?P<core>.*;)")),
    ("statement", re.compile(r"(?P<core>.*;)")),
]
# Declarations are none of them: their left side has a space.
STATEMENT = re.compile(r"return\b.*;|if \(.*;|for \(.*;|(\+\+|--)[\w.\->]+;"
                       r"|\*?[\w.\->:()\[\]*]+ ([-+*/|&^]|<<|>>)?= .*;|[\w.:>\-\[\]()*]+\(.*\);")
UNTOUCHED = re.compile(r"\bassert|static_assert|constexpr|NSLog|\blog[A-Z]?\w*\(|\w*Log\(|qWarning|qDebug|\bcerr\b"
                       r"|fprintf|reserve\(|shrink_to_fit|\btemplate\b|\boperator\b|^#|^using |\\$")
ASSIGNMENT = re.compile(r"(?<![=!<>])=(?!=)")
OPERATORS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
             "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+="}


def is_statement(core):
    """Whether this is one statement; not two on a line."""
    ends = [end for end in range(len(core)) if core[end] == ";" and balanced(core[:end])]
    return STATEMENT.fullmatch(core) is not None and (core.startswith("for ") or len(ends) == 1)


def split(code):
    """A masked line as (kind, start, end) of the condition or the statement that it is; None for other lines."""
    for kind, shape in SHAPES:
        match = shape.fullmatch(code)
        core = match["core"] if match else ""
        if match and balanced(core):
            fits = is_statement(core) if kind == "statement" else ";" not in core and not ASSIGNMENT.search(core)
            return (kind, *match.span("core")) if fits else None
    return None


def mutations(kind, text, code):
    """Every mutation of one condition or statement, as {name: [new text]}. `code` is the text masked."""
    found = collections.defaultdict(list)
    for match in re.finditer(r" (<=|>=|==|!=|<|>|&&|\|\||\+=|-=|\+|-|\*|/)(?= )", code):
        name = "logical" if match[1] in ("&&", "||") else "arithmetic" if match[1][0] in "+-*/" else "relational"
        found[name].append(text[:match.start(1)] + OPERATORS[match[1]] + text[match.end(1):])
    for match in re.finditer(r"(?<![\w.'])(?<!e-)(\d+)(?:\.\d+)?(?![\w.'])", code):
        found["constant"].append(text[:match.start(1)] + str(int(match[1]) + 1) + text[match.end(1):])
    for match in re.finditer(r"\b(true|false)\b", code):
        other = "false" if match[1] == "true" else "true"
        found["boolean"].append(text[:match.start()] + other + text[match.end():])
    if kind != "statement":
        # Finer mutations come first; a loop that never runs is found by anything.
        if not found and kind == "condition":
            found["negated"].append(text[1:] if re.fullmatch(r"![\w.\->:()]+", text) else f"!({text})")
    elif code.startswith("if ("):
        end = next(end for end in range(4, len(code)) if code[end] == ")" and balanced(code[4:end]))
        if not found and not ASSIGNMENT.search(code[4:end]):
            found["negated"].append(f"if (!({text[4:end]})){text[end + 1:]}")
    elif code.startswith("return"):
        value = text[6:-1].strip()
        if value and not re.fullmatch(r'\{\}|nullptr|std::nullopt|0|false|true|""|\*this', value):
            found["returned"].append("return {};")
    elif not code.startswith("for "):
        found["removed"].append(";")
    return found


def candidates(source, generator):
    """One mutation for each line that can carry one: (index, kind, before, after)."""
    previous = ";"
    for index, code in enumerate(source.code):
        line = code.strip()
        starts = previous[-1] in ";{}:" or previous.startswith("#")
        previous = line or previous
        following = next((later.strip() for later in source.code[index + 1:] if later.strip()), "")
        if not line or not starts or UNTOUCHED.search(line) or following.startswith("else"):
            continue
        parts = split(line)
        if not parts:
            continue
        kind, start, end = parts
        text = source.lines[index].strip()[:len(line)]
        choices = mutations(kind, text[start:end], line[start:end])
        if choices:
            name = generator.choice(sorted(choices))
            yield index, name, text, text[:start] + generator.choice(choices[name]) + text[end:]


def switched(number, before, after):
    """The line that is `after` while the mutant is active, and `before` otherwise."""
    kind, start, end = split(masked(before))
    head, old, tail = before[:start], before[start:end], before[end:]
    new = after[start:len(after) - len(tail)]
    if kind == "statement":
        return f"{head}if (ostrelMutant({number})) {{ {new} }} else {{ {old} }}{tail}"
    if new == f"!({old})":
        # What is converted to bool may be of another type than its negation.
        return f"{head}ostrelMutant({number}) != bool({old}){tail}"
    return f"{head}ostrelMutant({number}) ? ({new}) : ({old}){tail}"


def group_of(path):
    return next((name for name, pattern, _ in GROUPS if re.match(pattern, path)), None)


def sources_of(files):
    """The sources that may carry mutants: {path: Source}."""
    return {path: Source(path, content.decode()) for path, (content, _) in sorted(files.items())
            if path.endswith(".cpp") and group_of(path) and not LEFT_OUT.match(path)}


def read_list(path):
    lines = pathlib.Path(path).read_text().splitlines() if os.path.exists(path) else []
    return [json.loads(line) for line in lines if line.strip()]


def write_list(path, mutants):
    pathlib.Path(path).write_text("".join(json.dumps(mutant, ensure_ascii=False) + "\n" for mutant in mutants))


def wanted(mutants):
    return [mutant for mutant in mutants if "rejected" not in mutant]


class Overrides:
    """What a person knows of lines that changed, in JSON:

    {"renames": [["old", "new"], ...],
     "mutants": {"17": {"path": ..., "before": ..., "after": ...}, "18": {"gone": ...}}}

    The renames are made, in this order, in what a mutant's line and its context say when the line is not found as it
    was. A mutant's own entry replaces what LIST says of it; "gone" says why nothing corresponds to the line any more;
    "switched" is the whole new line with its call of ostrelMutant, for a line that is no statement any more.
    """

    def __init__(self, path):
        data = json.loads(pathlib.Path(path).read_text()) if path else {}
        self.renames = data.get("renames", [])
        self.mutants = data.get("mutants", {})

    def renamed(self, text):
        for old, new in self.renames:
            text = text.replace(old, new)
        return text

    def versions(self, mutant):
        """The mutant as it may be found, the likeliest version first."""
        own = self.mutants.get(str(mutant["id"]))
        if own:
            return [] if "gone" in own else [{**mutant, **own}]
        context = [self.renamed(line) for line in mutant["context"]]
        return [{**mutant, "context": mutant["context"] + context},
                {**mutant, "before": self.renamed(mutant["before"]), "after": self.renamed(mutant["after"]),
                 "context": mutant["context"] + context}]


def locate(mutant, sources):
    """(path, index) of a mutant's line; None when no line fits, or several equally well."""
    text = " ".join(mutant["before"].split())
    found = []
    for path, source in sources.items():
        for index in (index for index, line in enumerate(source.plain) if line == text):
            near = source.around(index, 6)
            score = sum(line in near for line in set(mutant["context"])) + 4 * (path == mutant["path"])
            found.append((score + 2 * (os.path.basename(path) == os.path.basename(mutant["path"])), path, index))
    found.sort(reverse=True)
    if not found or (len(found) > 1 and found[0][0] == found[1][0]):
        return None
    # A common line in another place stands there by chance.
    if found[0][0] < 2 and (len(found) > 1 or len(text) < 30):
        return None
    return found[0][1:]


def top_up(mutants, sources, count, seed):
    """Adds mutants, in the order of the seed, until each group has its share of `count`."""
    lines, order = collections.Counter(), collections.defaultdict(list)
    for path, source in sources.items():
        group = group_of(path)
        lines[group] += sum(1 for line in source.plain if line)
        order[group] += [(path, *candidate) for candidate in candidates(source, random.Random(f"{seed} {path}"))]
    share = {group: max(LEAST_PER_GROUP, count * number // sum(lines.values())) for group, number in lines.items()}
    for group, _ in lines.most_common():
        # The largest groups take or give what rounding left.
        share[group] += (sum(share.values()) < count) - (sum(share.values()) > count)
    taken = {(mutant["path"], mutant["before"]) for mutant in mutants}
    number = max((mutant["id"] for mutant in mutants), default=0)
    for group in (name for name, _, _ in GROUPS if name in share):
        random.Random(f"{seed} {group}").shuffle(order[group])
        missing = share[group] - sum(mutant["group"] == group for mutant in wanted(mutants))
        while missing > 0 and order[group]:
            path, index, kind, before, after = order[group].pop()
            mutant = {"id": number + 1, "group": group, "path": path, "kind": kind, "before": before, "after": after,
                      "context": sources[path].around(index, 3)}
            # A line that its text does not lead back to would be lost later.
            if (path, before) not in taken and locate(mutant, sources) == (path, index):
                number, missing = number + 1, missing - 1
                mutants.append(mutant)
