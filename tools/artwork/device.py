"""Pictures on a device of some scale, placed and stretched as the canvas of the toolkit does it."""

import math

import cairo

BIG = 250000  # pixels; what is larger has no lines worth the adaptive path, which is slow here


def read(path):
    surface = cairo.ImageSurface.create_from_png(path)
    copy = cairo.ImageSurface(cairo.FORMAT_ARGB32, surface.get_width(), surface.get_height())
    context = cairo.Context(copy)
    context.set_source_surface(surface)
    context.paint()
    return copy


def smooth(surface, factor):
    """At one half this is the plain mean of two by two pixels."""
    small = cairo.ImageSurface(cairo.FORMAT_ARGB32, math.floor(surface.get_width() * factor + .75),
                               math.floor(surface.get_height() * factor + .75))
    context = cairo.Context(small)
    context.scale(factor, factor)
    context.set_source_surface(surface)
    context.get_source().set_filter(cairo.FILTER_BILINEAR)
    context.paint()
    return small


def weights(activity, least):
    """For each target column its source column and that column's weight in quarters: in each group of four the middle
    one snaps to one side of a strong edge."""
    strong = [a for a in activity if a > least]
    threshold = sum(strong) / len(strong) if strong else 1 << 30
    value = lambda i: activity[i] if i < len(activity) else 0
    for start in range(0, len(activity) + 1, 4):
        middle = 2
        if value(start + 1) > threshold:
            best, index = (value(start - 1) if start else 1 << 30), -1
            if best < value(start): best, index = value(start), 0
            if best < value(start + 2): best, index = value(start + 2), 1
            middle = 3 if best < value(start + 3) or index == 0 else 1
        yield from ((start, 3), (start + 1, middle), (start + 2, 1))


def three_quarters(surface):
    """Four source pixels to three, with edges kept."""
    w, h, stride = surface.get_width(), surface.get_height(), surface.get_stride()
    data = bytes(surface.get_data())
    pixels = [[data[y * stride + 4 * x:y * stride + 4 * x + 4] for x in range(w)] for y in range(h)]
    apart = lambda a, b: 0 if a == b else max(abs(i - j) for i, j in zip(a, b))
    columns = list(weights([sum(apart(row[x], row[x + 1]) for row in pixels) for x in range(w - 1)], 16 * h))
    rows = list(weights([sum(map(apart, pixels[y], pixels[y + 1])) for y in range(h - 1)], 16 * w))
    small = cairo.ImageSurface(cairo.FORMAT_ARGB32, w * 3 // 4, h * 3 // 4)
    target, target_stride = small.get_data(), small.get_stride()
    for ty, (y, wy) in enumerate(rows[:h * 3 // 4]):
        upper, lower = pixels[y], pixels[min(y + 1, h - 1)]
        for tx, (x, wx) in enumerate(columns[:w * 3 // 4]):
            right = min(x + 1, w - 1)
            four = zip(upper[x], upper[right], lower[x], lower[right])
            at = ty * target_stride + 4 * tx
            target[at:at + 4] = bytes(
                (wx * wy * a + (4 - wx) * wy * b + wx * (4 - wy) * c + (4 - wx) * (4 - wy) * d) // 16
                for a, b, c, d in four)
    small.mark_dirty()
    return small


class Device:
    """A surface of `width` by `height` logical units at `scale`, on which pictures from `folder` are drawn."""

    def __init__(self, folder, width, height, scale, ground):
        self.folder, self.scale, self.cache = folder, scale, {}
        self.surface = cairo.ImageSurface(cairo.FORMAT_RGB24, self.pixel(width), self.pixel(height))
        self.context = cairo.Context(self.surface)
        self.fill(0, 0, width, height, ground)

    def pixel(self, v):
        return math.floor(v * self.scale + .75)

    def load(self, name):
        if name not in self.cache:
            full = read('%s/%s_2x.png' % (self.folder, name))
            self.cache[name] = full if self.scale == 2 else (
                three_quarters(full) if self.scale == 1.5 and full.get_width() * full.get_height() < BIG
                else smooth(full, self.scale / 2))
        return self.cache[name]

    def size(self, name):
        picture = self.load(name)
        return picture.get_width() / self.scale, picture.get_height() / self.scale

    def fill(self, x, y, w, h, colour, alpha=1):
        x0, y0, x1, y1 = self.pixel(x), self.pixel(y), self.pixel(x + w), self.pixel(y + h)
        self.context.set_source_rgba(*(int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)), alpha)
        self.context.rectangle(x0, y0, x1 - x0, y1 - y0)
        self.context.fill()

    def copy(self, picture, x, y, sx, sy, w, h, alpha):
        """All in device pixels."""
        self.context.save()
        self.context.rectangle(x, y, w, h)
        self.context.clip()
        self.context.set_source_surface(picture, x - sx, y - sy)
        self.context.get_source().set_filter(cairo.FILTER_NEAREST)
        self.context.paint_with_alpha(alpha)
        self.context.restore()

    def draw(self, name, x, y, alpha=255):
        picture = self.load(name)
        self.copy(picture, self.pixel(x), self.pixel(y), 0, 0, picture.get_width(), picture.get_height(), alpha / 255)

    def turned(self, name, x, y, degrees):
        picture = self.load(name)
        half = picture.get_width() / 2
        self.context.save()
        self.context.translate(self.pixel(x) + half, self.pixel(y) + half)
        self.context.rotate(math.radians(degrees))
        self.context.set_source_surface(picture, -half, -half)
        self.context.paint()
        self.context.restore()

    @staticmethod
    def slices(source, target, cross, least):
        """Pieces along one axis: source start, target start, length. Ends stay, the middle is repeated."""
        if source == target: return [(0, 0, source)]
        end = int(min(max(min(source / 3, cross), least), target / 2))
        tile = max(source - 2 * end, 1)
        pieces = [(0, 0, end), (source - end, target - end, end)]
        for start in range(end, target - end, tile):
            pieces.append((end, start, min(tile, target - end - start)))
        return pieces

    def stretch(self, name, x, y, w, h=None, alpha=255, end=0):
        """`end` is the least size of the ends in logical units."""
        picture = self.load(name)
        pw, ph = picture.get_width(), picture.get_height()
        x0, y0 = self.pixel(x), self.pixel(y)
        width, height = self.pixel(x + w) - x0, ph if h is None else self.pixel(y + h) - y0
        for sy, ty, lh in self.slices(ph, height, pw, end * self.scale):
            for sx, tx, lw in self.slices(pw, width, ph, end * self.scale):
                self.copy(picture, x0 + tx, y0 + ty, sx, sy, lw, lh, alpha / 255)
