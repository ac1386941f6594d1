"""How files that are sent reach the disk."""

import shutil
import tempfile

from django.conf import settings
from django.core.files.uploadedfile import UploadedFile
from django.core.files.uploadhandler import FileUploadHandler, StopUpload

from . import limits


class NamelessFileHandler(FileUploadHandler):
    """Writes what is sent into a nameless file on the project's disk.

    Nothing of it is held in memory, or left behind by a server that is ended. When the disk's last
    SPARE_BYTES would be touched, nothing more is read, and the request has disk_is_full set.
    """

    def new_file(self, *args, **kwargs):
        super().new_file(*args, **kwargs)
        file = tempfile.TemporaryFile(dir=settings.PACKAGE_DIR)
        self.file = UploadedFile(file, self.file_name, self.content_type)

    def receive_data_chunk(self, raw_data, start):
        if shutil.disk_usage(settings.PACKAGE_DIR).free < limits.SPARE_BYTES:
            self.request.disk_is_full = True
            raise StopUpload(connection_reset=True)
        self.file.write(raw_data)

    def file_complete(self, file_size):
        self.file.size = file_size
        return self.file

    def upload_interrupted(self):
        if hasattr(self, "file"):
            self.file.close()
