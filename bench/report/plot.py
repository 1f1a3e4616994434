"""Line charts as SVG, of a few series over a few points."""

import math

WIDTH, HEIGHT = 640, 400
LEFT, RIGHT, TOP, BOTTOM = 70, 20, 40, 90
# Told apart also by those who do not see all colours; each has a shape of its own, too.
STYLES = [("#d55e00", ""), ("#0072b2", ""), ("#56b4e9", "6 3"), ("#009e73", "2 2"),
          ("#cc79a7", "8 3 2 3")]


class Axis:
    """Maps values to places; `log` to equal factors."""

    def __init__(self, low, high, begin, end, log):
        self.log, self.begin, self.end = log, begin, end
        self.low, self.high = (math.log10(low), math.log10(high)) if log else (low, high)

    def place(self, value):
        value = math.log10(value) if self.log else value
        return self.begin + (value - self.low) / (self.high - self.low) * (self.end - self.begin)


def short(value):
    for size, letter in ((1e6, "M"), (1e3, "k")):
        if value >= size:
            return f"{value / size:g}{letter}"
    return f"{value:g}"


def ticks(low, high, log):
    if log:
        return [10.0 ** power for power in range(math.ceil(math.log10(low) - 1e-9),
                                                 math.floor(math.log10(high) + 1e-9) + 1)]
    step = 10 ** math.floor(math.log10(high / 4))
    step = next(step * factor for factor in (1, 2, 5, 10) if high / (step * factor) <= 6)
    return [step * i for i in range(int(high / step) + 1)]


def chart(title, x_label, y_label, series, log):
    """`series`: (name, [(x, y)...]) each; `log`: both axes by factors. The text of the SVG."""
    xs = sorted({x for _, points in series for x, _ in points})
    ys = [y for _, points in series for _, y in points]
    low = 10 ** math.floor(math.log10(min(ys))) if log else 0
    high = 10 ** math.ceil(math.log10(max(ys))) if log else max(ys) * 1.05
    x_axis = Axis(xs[0], xs[-1], LEFT + 10, WIDTH - RIGHT - 10, log)
    y_axis = Axis(low, high, HEIGHT - BOTTOM, TOP, log)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
           'font-family="sans-serif" font-size="12">',
           f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
           f'<text x="{WIDTH / 2}" y="22" text-anchor="middle" font-size="15">{title}</text>']
    for value in ticks(low, high, log):
        y = y_axis.place(value)
        out += [f'<line x1="{LEFT}" y1="{y:.1f}" x2="{WIDTH - RIGHT}" y2="{y:.1f}" '
                'stroke="#ddd"/>',
                f'<text x="{LEFT - 6}" y="{y + 4:.1f}" text-anchor="end">{short(value)}</text>']
    for value in xs:
        x = x_axis.place(value)
        out += [f'<line x1="{x:.1f}" y1="{TOP}" x2="{x:.1f}" y2="{HEIGHT - BOTTOM}" '
                'stroke="#eee"/>',
                f'<text x="{x:.1f}" y="{HEIGHT - BOTTOM + 16}" text-anchor="middle">'
                f'{value:,}</text>']
    out += [f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - BOTTOM + 36}" '
            f'text-anchor="middle">{x_label}</text>',
            f'<text transform="translate(18 {(TOP + HEIGHT - BOTTOM) / 2}) rotate(-90)" '
            f'text-anchor="middle">{y_label}</text>']
    for i, (name, points) in enumerate(series):
        colour, dashes = STYLES[i % len(STYLES)]
        line = " ".join(f"{x_axis.place(x):.1f},{y_axis.place(y):.1f}" for x, y in points)
        out.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2" '
                   f'stroke-dasharray="{dashes}"/>')
        out += [f'<circle cx="{x_axis.place(x):.1f}" cy="{y_axis.place(y):.1f}" r="3.5" '
                f'fill="{colour}"/>' for x, y in points]
        column, row = i % 3, i // 3
        x, y = LEFT + column * 190, HEIGHT - 32 + row * 18
        out += [f'<line x1="{x}" y1="{y}" x2="{x + 28}" y2="{y}" stroke="{colour}" '
                f'stroke-width="2" stroke-dasharray="{dashes}"/>',
                f'<text x="{x + 34}" y="{y + 4}">{name}</text>']
    return "\n".join(out + ["</svg>"]) + "\n"
