"""Bar charts as SVG files, without any library."""
import html
import math

COLORS = ["#2563a8", "#c2762d", "#6b8e4e", "#8a5a9e"]
ROW, GAP, LEFT, WIDTH, RIGHT, TOP = 16, 12, 250, 420, 70, 64


def nice_step(largest):
    """A step of 1, 2 or 5 times a power of ten that divides an axis into at most six parts."""
    raw = largest / 6
    power = 10 ** math.floor(math.log10(raw))
    return next(power * factor for factor in (1, 2, 5, 10) if power * factor >= raw)


def text(x, y, words, anchor="start", size=12, more=""):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}" {more}>'
            f"{html.escape(words)}</text>")


def write_bars(path, title, unit, groups):
    """@param groups [(label, {series: value or None})]: a bar for each value, from 0"""
    series = list(dict.fromkeys(name for _, values in groups for name, value in values.items() if value))
    largest = max((value for _, values in groups for value in values.values() if value), default=1)
    step = nice_step(largest)
    end = step * math.ceil(largest / step)
    scale = WIDTH / end
    parts, y = [], TOP
    for label, values in groups:
        shown = [(name, values[name]) for name in series if values.get(name)]
        parts.append(text(LEFT - 10, y + len(shown) * ROW / 2 + 4, label, "end"))
        for name, value in shown:
            parts.append(f'<rect x="{LEFT}" y="{y}" width="{value * scale:.1f}" height="{ROW - 2}" '
                         f'fill="{COLORS[series.index(name) % len(COLORS)]}"/>')
            parts.append(text(LEFT + value * scale + 5, y + ROW - 5, f"{value:.3g}" if value < 1000 else f"{value:.0f}",
                              size=11))
            y += ROW
        y += GAP
    grid = []
    for i in range(round(end / step) + 1):
        x = LEFT + i * step * scale
        grid.append(f'<line x1="{x:.1f}" y1="{TOP - 6}" x2="{x:.1f}" y2="{y - GAP / 2:.1f}" stroke="#ddd"/>')
        grid.append(text(x, y + 8, f"{i * step:g}", "middle", 11, 'fill="#555"'))
    legend, x = [], LEFT
    for i, name in enumerate(series):
        legend.append(f'<rect x="{x}" y="36" width="12" height="12" fill="{COLORS[i % len(COLORS)]}"/>')
        legend.append(text(x + 17, 46, name))
        x += 30 + 8 * len(name)
    height = y + 20
    width = LEFT + WIDTH + RIGHT
    path.write_text(
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}" '
        'font-family="sans-serif" fill="#222">\n<rect width="100%" height="100%" fill="#fff"/>\n' +
        "\n".join([text(16, 24, title, size=15, more='font-weight="bold"'), text(16, 46, unit, more='fill="#555"'),
                   *grid, *parts, *legend]) + "\n</svg>\n")
