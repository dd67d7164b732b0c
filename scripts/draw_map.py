#!/usr/bin/env python3
"""Draws docs/map.svg, the map of the folders, from what check_layers.py reads.

Each folder is a room, labelled with the words before the first colon of its row in the tables of
docs/architecture.md. Its floor is above those of all folders that it links; the entry is at the top.
An arrow leads to a linked folder. One that follows from other arrows is left out.

Usage: draw_map.py [--check] [ROOT]

  --check   write nothing; fail if docs/map.svg differs from what would be drawn
  ROOT      the repository; by default the one that this script lies in
"""

import argparse
import sys
from html import escape
from pathlib import Path

import check_layers

PICTURE = "docs/map.svg"

ROOM_HEIGHT, FLOOR_HEIGHT = 46, 88
ROOM_GAP, LANE_GAP = 26, 20  # between two rooms, and beside an arrow that passes a floor
MARGIN, CAPTION_HEIGHT = 36, 84
ROUNDS = 4000  # until the places rest
CODE_WIDTH, TEXT_WIDTH = 8.5, 6.7  # of a letter of a name, and of a label

STYLE = """
  .paper { fill: #fbfaf7; stroke: #dcd8cf }
  .floor { stroke: #e8e4db }
  .arrow { fill: none; stroke: #8a8577; stroke-width: 1.6 }
  .head { fill: #8a8577 }
  .engine { fill: #e3eefb; stroke: #5b8fc7 }
  .entry { fill: #2f6fb3; stroke: #2f6fb3 }
  .program { fill: #fbeed9; stroke: #c9974a }
  .name { font: 600 14px ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; fill: #1d2733 }
  .label { font: 12.5px system-ui, "DejaVu Sans", "Segoe UI", Helvetica, Arial, sans-serif; fill: #4c5561 }
  .name.on-entry { fill: #ffffff }
  .label.on-entry { fill: #dceafa }
  @media (prefers-color-scheme: dark) {
    .paper { fill: #14181e; stroke: #2e353f }
    .floor { stroke: #222831 }
    .arrow { stroke: #8b94a1 }
    .head { fill: #8b94a1 }
    .engine { fill: #1b3047; stroke: #5b8fc7 }
    .program { fill: #3a2d18; stroke: #c9974a }
    .name { fill: #eef2f6 }
    .label { fill: #b4bdc9 }
  }
"""

Graph = dict[str, list[str]]
Lane = tuple[str, str, int]  # where an arrow passes a floor: from, to, floor
Place = str | Lane
Floors = list[list[Place]]


def reduced(links: dict[str, set[str]]) -> Graph:
    """The links without those that follow from others."""
    below: dict[str, set[str]] = {}

    def visit(folder: str) -> set[str]:
        if folder not in below:
            below[folder] = set()
            for linked in links[folder]:
                below[folder] |= {linked} | visit(linked)
        return below[folder]

    return {folder: [linked for linked in linked_ones
                     if not any(linked in visit(other) for other in linked_ones)]
            for folder, linked_ones in ((folder, sorted(links[folder])) for folder in links)}


def floor_numbers(graph: Graph) -> dict[str, int]:
    """How high each folder lies: 0 is the ground."""
    number: dict[str, int] = {}

    def visit(folder: str) -> int:
        if folder not in number:
            number[folder] = max((visit(linked) + 1 for linked in graph[folder]), default=0)
        return number[folder]

    for folder in sorted(graph, key=visit, reverse=True):
        users = [user for user in graph if folder in graph[user]]
        if folder == check_layers.ENGINE:
            number[folder] = max(number.values())
        elif len(users) > len(graph[folder]):  # higher up its arrows are shorter in all
            number[folder] = min(number[user] for user in users) - 1
    return number


def is_engine(place: Place) -> bool:
    """Whether a room, or the room that an arrow comes from, belongs to the engine."""
    return (place if isinstance(place, str) else place[0]).startswith("src/")


class Layout:
    """Which rooms and arrows are on each floor, in which order, and where."""

    def __init__(self, graph: Graph, labels: dict[str, str]) -> None:
        self.labels = labels
        number = floor_numbers(graph)
        self.floors: Floors = [[] for _ in range(max(number.values()) + 1)]
        for folder in graph:
            self.floors[number[folder]].append(folder)
        self.ways: list[list[Place]] = []  # each arrow, from room to room
        for folder, linked_ones in graph.items():
            for linked in linked_ones:
                way: list[Place] = [folder]
                for floor in range(number[folder] - 1, number[linked], -1):
                    way.append((folder, linked, floor))
                    self.floors[floor].append(way[-1])
                self.ways.append([*way, linked])
        self.steps = [(upper, lower) for way in self.ways for upper, lower in zip(way, way[1:])]
        self._order()
        self.centre = self._centres()

    def name(self, folder: str) -> str:
        return folder.removeprefix("src/")

    def width(self, place: Place) -> float:
        if not isinstance(place, str):
            return 0
        return 26 + max(CODE_WIDTH * len(self.name(place)), TEXT_WIDTH * len(self.labels[place]))

    def distance(self, left: Place, right: Place) -> float:
        """The least that there must be from one centre to the next."""
        between_rooms = isinstance(left, str) and isinstance(right, str)
        return (self.width(left) + self.width(right)) / 2 + (ROOM_GAP if between_rooms else LANE_GAP)

    def _cost(self) -> tuple[int, float]:
        """How often arrows cross or the engine lies right of a program, and how far arrows lean."""
        at: dict[Place, float] = {}
        floor_of: dict[Place, int] = {}
        for number, floor in enumerate(self.floors):
            for position, place in enumerate(floor):
                at[place], floor_of[place] = position - (len(floor) - 1) / 2, number
        crossings = sum(
            1 for index, (upper, lower) in enumerate(self.steps)
            for other_upper, other_lower in self.steps[:index]
            if floor_of[upper] == floor_of[other_upper]
            and (at[upper] - at[other_upper]) * (at[lower] - at[other_lower]) < 0)
        misplaced = sum(1 for floor in self.floors for index, place in enumerate(floor)
                        if is_engine(place) for left in floor[:index] if not is_engine(left))
        return crossings + misplaced, sum(abs(at[upper] - at[lower]) for upper, lower in self.steps)

    def _order(self) -> None:
        """Moves one place along its floor, as long as that makes the picture simpler."""
        best = self._cost()
        improved = True
        while improved:
            improved = False
            for floor in self.floors:
                for place in list(floor):
                    start = floor.index(place)
                    for position in range(len(floor)):
                        floor.remove(place)
                        floor.insert(position, place)
                        if (cost := self._cost()) < best:
                            best, start, improved = cost, position, True
                    floor.remove(place)
                    floor.insert(start, place)

    def _centres(self) -> dict[Place, float]:
        """Brings each place near those that it is joined with, keeping order and distances."""
        joined: dict[Place, dict[Place, int]] = {
            place: {} for floor in self.floors for place in floor}
        for upper, lower in self.steps:  # the longer an arrow, the straighter
            pull = (1, 4, 60)[(not isinstance(upper, str)) + (not isinstance(lower, str))]
            if is_engine(upper) and is_engine(lower):
                pull *= 4
            joined[upper][lower] = joined[lower][upper] = pull
        centre: dict[Place, float] = {place: 0.0 for place in joined}
        for _ in range(ROUNDS):
            for floor in self.floors:
                pulls = [sum(joined[place].values()) for place in floor]
                wishes = [sum(centre[other] * pull for other, pull in joined[place].items()) / pull_sum
                          for place, pull_sum in zip(floor, pulls)]
                centre |= zip(floor, self._apart(floor, wishes, pulls))
        return centre

    def _apart(self, floor: list[Place], wishes: list[float], pulls: list[int]) -> list[float]:
        """The centres nearest to the wishes that are far enough apart, by weighted least squares."""
        offsets = [0.0]
        for left, right in zip(floor, floor[1:]):
            offsets.append(offsets[-1] + self.distance(left, right))
        blocks: list[tuple[float, int, int]] = []  # runs that touch: mean, weight, length
        for wish, offset, weight in zip(wishes, offsets, pulls):
            mean, length = wish - offset, 1
            while blocks and blocks[-1][0] > mean:
                other, other_weight, other_length = blocks.pop()
                mean = (mean * weight + other * other_weight) / (weight + other_weight)
                weight, length = weight + other_weight, length + other_length
            blocks.append((mean, weight, length))
        starts = [mean for mean, _, length in blocks for _ in range(length)]
        return [start + offset for start, offset in zip(starts, offsets)]


def svg(graph: Graph, labels: dict[str, str]) -> str:
    """The whole picture."""
    layout = Layout(graph, labels)
    left = min(layout.centre[place] - layout.width(place) / 2 for place in layout.centre)
    right = max(layout.centre[place] + layout.width(place) / 2 for place in layout.centre)
    width = round(right - left) + 2 * MARGIN
    bottom = MARGIN + (len(layout.floors) - 1) * FLOOR_HEIGHT + ROOM_HEIGHT
    height = bottom + CAPTION_HEIGHT

    top: dict[Place, int] = {place: MARGIN + (len(layout.floors) - 1 - number) * FLOOR_HEIGHT
                             for number, floor in enumerate(layout.floors) for place in floor}
    x = {place: round(centre - left + MARGIN) for place, centre in layout.centre.items()}

    def ports(place: Place, others: list[Place]) -> dict[Place, int]:
        """Where the arrows to or from these places meet the edge of a room."""
        ordered = sorted(others, key=lambda other: x[other])
        step = min(26.0, (layout.width(place) - 24) / max(1, len(ordered)))
        return {other: round(x[place] + (index - (len(ordered) - 1) / 2) * step)
                for index, other in enumerate(ordered)}

    out_of = {place: ports(place, [lower for upper, lower in layout.steps if upper == place])
              for place in top}
    into = {place: ports(place, [upper for upper, lower in layout.steps if lower == place])
            for place in top}

    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}"'
        f' viewBox="0 0 {width} {height}" role="img" aria-labelledby="title">',
        '<title id="title">The folders of Brivok, each above those that it includes</title>',
        f"<style>{STYLE}</style>",
        '<marker id="head" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="8" markerHeight="8"'
        ' markerUnits="userSpaceOnUse" orient="auto"><path class="head" d="M0 0L8 4L0 8z"/></marker>',
        f'<rect class="paper" x="0.5" y="0.5" width="{width - 1}" height="{height - 1}" rx="10"/>',
    ]
    for number in range(1, len(layout.floors)):
        y = MARGIN + number * FLOOR_HEIGHT - (FLOOR_HEIGHT - ROOM_HEIGHT) // 2
        lines.append(f'<path class="floor" d="M{MARGIN // 2} {y}H{width - MARGIN // 2}"/>')
    for way in layout.ways:
        path = ""
        for upper, lower in zip(way, way[1:]):
            start, end = top[upper] + ROOM_HEIGHT, top[lower]
            begin_x, end_x, middle = out_of[upper][lower], into[lower][upper], (start + end) // 2
            path += f"L{begin_x} {start}" if path else f"M{begin_x} {start}"
            path += f"C{begin_x} {middle} {end_x} {middle} {end_x} {end}"
        lines.append(f'<path class="arrow" d="{path}" marker-end="url(#head)"/>')

    def room(kind: str, x: int, y: int, width: int, name: str, label: str) -> None:
        on_entry = " on-entry" if kind == "entry" else ""
        lines.extend([
            f'<rect class="{kind}" x="{x - width // 2}" y="{y}" width="{width}"'
            f' height="{ROOM_HEIGHT}" rx="7"/>',
            f'<text class="name{on_entry}" x="{x}" y="{y + 19}" text-anchor="middle">'
            f"{escape(name)}</text>",
            f'<text class="label{on_entry}" x="{x}" y="{y + 36}" text-anchor="middle">'
            f"{escape(label)}</text>"])

    for floor in reversed(layout.floors):
        for place in floor:
            if isinstance(place, str):
                kind = ("entry" if place == check_layers.ENGINE else
                        "engine" if place.startswith("src/") else "program")
                room(kind, x[place], top[place], round(layout.width(place)), layout.name(place),
                     labels[place])

    for kind, x_of, text in (("engine", MARGIN, "the engine, src/"),
                             ("program", MARGIN + 150, "other programs")):
        lines += [f'<rect class="{kind}" x="{x_of}" y="{height - 55}" width="14" height="14" rx="3"/>',
                  f'<text class="label" x="{x_of + 22}" y="{height - 43}">{text}</text>']
    lines.append(f'<text class="label" x="{MARGIN}" y="{height - 20}">Arrows lead to what a folder'
                 " includes. Those that follow from others are left out.</text>")
    return "\n".join([*lines, "</svg>", ""])


def drawn(root: Path) -> str:
    """The picture of a repository. Raises LayerError if a folder has no row in the tables."""
    links = check_layers.Links(root)
    rows = check_layers.map_rows(root)
    labels = {}
    for folder in links.of:
        if folder not in rows:
            raise check_layers.LayerError(f"{check_layers.MAP}: has no row for {folder}")
        labels[folder] = rows[folder].what.partition(":")[0].strip()
    return svg(reduced({folder: set(linked) for folder, linked in links.of.items()}), labels)


def main() -> int:
    parser = argparse.ArgumentParser(description=f"Draws {PICTURE}, the map of the folders.")
    parser.add_argument("--check", action="store_true",
                        help=f"write nothing; fail if {PICTURE} differs from what would be drawn")
    parser.add_argument("root", nargs="?", type=Path, metavar="ROOT",
                        default=Path(__file__).resolve().parent.parent, help="the repository")
    arguments = parser.parse_args()
    file = arguments.root / PICTURE
    try:
        picture = drawn(arguments.root)
    except check_layers.LayerError as error:
        print(error, file=sys.stderr)
        return 1
    if not arguments.check:
        file.write_text(picture, encoding="utf-8")
    elif not file.is_file() or file.read_text(encoding="utf-8") != picture:
        print(f"{PICTURE} is out of date; scripts/draw_map.py draws it", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
