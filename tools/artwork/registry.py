"""Every picture by its name: its logical size and the function that draws it."""

from kit import Doc

PICTURES = {}


def picture(name, width, height):
    """Registers a function that takes a Doc and gives SVG in logical units."""
    def register(draw):
        assert name not in PICTURES, name
        PICTURES[name] = (width, height, draw)
        return draw
    return register


def source(name):
    """The SVG source of a picture at double density."""
    width, height, draw = PICTURES[name]
    doc = Doc(width, height)
    doc.body.append(draw(doc))
    return doc.svg()
