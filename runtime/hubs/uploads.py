"""How files that are sent reach the disk."""

import os
import shutil
import tempfile
from contextlib import contextmanager, suppress
from typing import IO

from django.conf import settings
from django.core.files.uploadedfile import UploadedFile
from django.core.files.uploadhandler import FileUploadHandler, StopUpload

from . import limits, resources
from .unfinished import NoRoom


def _nameless_file() -> IO[bytes]:
    """A file on the project's disk that can be given a name, where the file system can do that."""
    try:
        return os.fdopen(os.open(settings.PACKAGE_DIR, os.O_TMPFILE | os.O_RDWR | os.O_CLOEXEC,
                                 0o600), "w+b")
    except OSError:
        return tempfile.TemporaryFile(dir=settings.PACKAGE_DIR)


def spare_bytes() -> int:
    """How many bytes may still be sent before the disk counts as full."""
    return max(0, shutil.disk_usage(settings.PACKAGE_DIR).free - limits.SPARE_BYTES)


class NamelessFileHandler(FileUploadHandler):
    """Writes what is sent into a nameless file on the project's disk.

    Nothing of it is held in memory, or left behind by a server that is ended. Reading stops after
    the files that the request may bring, its most_files, and then the request has too_many_files
    set; when the disk's last SPARE_BYTES would be touched, and then it has disk_is_full set; when
    the request's hand_in, if any, finds no room or a file cannot be written, and then it has
    no_room set, which says why.

    A request whose body breaks off has form_is_cut set.
    """

    def __init__(self, request=None):
        super().__init__(request)
        self._number = 0
        self._was_interrupted = False

    def handle_raw_input(self, *args, **kwargs):
        self.request.form_is_cut = True  # until it has been read

    def new_file(self, *args, **kwargs):
        super().new_file(*args, **kwargs)
        self._number += 1
        if self._number > getattr(self.request, "most_files", 0):
            self.request.too_many_files = True
            raise StopUpload(connection_reset=True)
        self._take_room(lambda hand_in: hand_in.begin())
        with self._writing():
            self.file = UploadedFile(_nameless_file(), self.file_name, self.content_type)

    def receive_data_chunk(self, raw_data, start):
        if not spare_bytes():
            self.request.disk_is_full = True
            raise StopUpload(connection_reset=True)
        self._take_room(lambda hand_in: hand_in.add(len(raw_data)))
        with self._writing():
            self.file.write(raw_data)

    @contextmanager
    def _writing(self):
        try:
            yield
        except OSError as error:
            self.request.no_room = resources.cause(error)
            if hasattr(self, "file"):
                with suppress(OSError):
                    self.file.close()
                del self.file
            raise StopUpload(connection_reset=True) from error

    def _take_room(self, take):
        hand_in = getattr(self.request, "hand_in", None)
        try:
            if hand_in:
                take(hand_in)
        except NoRoom as reason:
            self.request.no_room = str(reason)
            raise StopUpload(connection_reset=True) from reason

    def file_complete(self, file_size):
        file = self.file
        del self.file  # Django closes it when the upload stops at a later one
        file.size = file_size
        return file

    def upload_complete(self):
        self.request.form_is_cut = self._was_interrupted

    def upload_interrupted(self):
        self._was_interrupted = True
        if hasattr(self, "file"):
            self.file.close()
