"""Gathers the pictures of all modules in the registry."""

import bars  # noqa: F401
import buttons  # noqa: F401
import icons  # noqa: F401
import knobs  # noqa: F401
import meters  # noqa: F401
import panels  # noqa: F401
import sliders  # noqa: F401
