"""Screenshots compared with pictures that are kept, so that another font library passes and a missing row does not.

Both are shrunk to 640 x 360 and looked at in squares of 16 x 16: how much the mean of each colour differs. A letter that
moves by half a pixel hardly changes that mean; a row, a panel's edge or a colour does.
"""
import contextlib
import os

from nuvid import ffmpeg

WIDTH, HEIGHT, SQUARE = 640, 360, 16
WORST = 9.0    # of one square's means, of 255
OVERALL = 1.0    # of all squares


def pixels(path):
    """Shrunk; three bytes a pixel."""
    return ffmpeg("-i", path, "-vf", f"scale={WIDTH}:{HEIGHT}:flags=area", "-f", "rawvideo", "-pix_fmt", "rgb24", "-")


def write(path, data, width=WIDTH, height=HEIGHT):
    ffmpeg("-f", "rawvideo", "-pix_fmt", "rgb24", "-s", f"{width}x{height}", "-i", "-", "-pred", "mixed", "-compression_level", "9", path, data=data)


def means(data):
    """Of each square's colours, row by row; the last row of squares is lower than the others."""
    found = []
    for top in range(0, HEIGHT, SQUARE):
        lines = range(top, min(top + SQUARE, HEIGHT))
        for left in range(0, WIDTH, SQUARE):
            for colour in range(3):
                total = sum(sum(data[(y * WIDTH + left) * 3 + colour:(y * WIDTH + left + SQUARE) * 3:3]) for y in lines)
                found.append(total / (SQUARE * len(lines)))
    return found


def compare(actual, golden):
    """What differs too much, as a text; empty: nothing does. And how much each square differs."""
    differences = [abs(a - b) for a, b in zip(means(actual), means(golden), strict=True)]
    squares = [max(differences[i:i + 3]) for i in range(0, len(differences), 3)]
    worst = max(range(len(squares)), key=squares.__getitem__)
    row, column = divmod(worst, WIDTH // SQUARE)
    mean = sum(squares) / len(squares)
    if squares[worst] <= WORST and mean <= OVERALL:
        return "", squares
    return (f"the square at {column * SQUARE}, {row * SQUARE} of {WIDTH} x {HEIGHT} differs by {squares[worst]:.1f} (at most {WORST}), "
            f"all of them by {mean:.2f} (at most {OVERALL})"), squares


def show(squares):
    """The squares as a picture: the brighter the more they differ."""
    columns = WIDTH // SQUARE
    data = bytearray()
    for y in range(HEIGHT):
        for x in range(columns):
            data += bytes((min(255, int(squares[y // SQUARE * columns + x] * 255 / (4 * WORST))),) * 3) * SQUARE
    return bytes(data)


def check(screenshot, golden, folder, renew):
    """Answers what is wrong with a screenshot, and leaves it and the difference in the folder."""
    actual = pixels(screenshot)
    if renew:
        write(golden, actual)
        return ""
    if not os.path.exists(golden):
        return f"there is no {golden}"
    trouble, squares = compare(actual, pixels(golden))
    name = os.path.join(folder, os.path.splitext(os.path.basename(golden))[0])
    left = {f"{name}-actual.png": actual, f"{name}-difference.png": show(squares)}
    if not trouble:
        for path in left:
            with contextlib.suppress(FileNotFoundError):
                os.remove(path)
        return ""
    os.makedirs(folder, exist_ok=True)
    for path, data in left.items():
        write(path, data)
    return f"{os.path.basename(golden)}: {trouble}; see {' and '.join(left)}"
