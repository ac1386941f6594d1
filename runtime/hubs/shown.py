"""Which offered files a browser shows rather than saves, by their extensions."""

import os

# Formats that run nothing. HTML, SVG and XML can hold scripts: like the rest, they are only saved.
# docs/deployment.md has the same in nginx's words.
_TYPES = {
    ".png": "image/png", ".jpg": "image/jpeg", ".jpeg": "image/jpeg", ".gif": "image/gif",
    ".webp": "image/webp", ".bmp": "image/bmp", ".pdf": "application/pdf",
    ".txt": "text/plain; charset=utf-8", ".md": "text/plain; charset=utf-8",
    ".mp3": "audio/mpeg", ".m4a": "audio/mp4", ".aac": "audio/aac", ".oga": "audio/ogg",
    ".ogg": "audio/ogg", ".opus": "audio/ogg", ".wav": "audio/wav", ".flac": "audio/flac",
    ".mp4": "video/mp4", ".m4v": "video/mp4", ".webm": "video/webm", ".ogv": "video/ogg",
    ".mov": "video/quicktime",
}

# What a browser's own viewers need of a page, and nothing that a file could use
POLICY = ("default-src 'none'; img-src 'self'; media-src 'self'; style-src 'unsafe-inline'; "
          "base-uri 'none'; form-action 'none'; frame-ancestors 'none'")


def content_type(name: str) -> str | None:
    """The type under which a file of that name is shown; None if it is only saved."""
    return _TYPES.get(os.path.splitext(name)[1].lower())
