"""What may be sent to a network, and how often: every bound that an operator may want to change."""

import os

from django.conf import settings

# Where the files that visitors hand in are kept, for staff alone: beside those that are offered
HANDED_IN_DIR = settings.RESOURCES_DIR.parent / "depots"

# How many files staff may offer at once: the photographs of a camera, for instance
OFFERED_AT_ONCE = 1000

# What a visitor may hand in at once, in bytes and in files, and the number and size of all of it
HANDED_IN_FILE_BYTES = 100 * 2**20
HANDED_IN_AT_ONCE = 20
HANDED_IN_FILES = 300
HANDED_IN_BYTES = 3 * 2**30

# What of that may come from one address, how many may hand in from it at the same time, and for how
# many seconds others wait for their turn
HANDED_IN_FILES_PER_ADDRESS = 60
HANDED_IN_BYTES_PER_ADDRESS = 600 * 2**20
HANDING_IN_PER_ADDRESS = 4
HANDING_IN_PATIENCE = 30

# What stays free on the disk, whoever sends
SPARE_BYTES = 500 * 2**20

# Tries to log in to one account from one machine, and after how many seconds there are new ones.
# Each process of a server counts for itself.
LOGIN_TRIES = 5
LOGIN_PAUSE = 60

# Log-ins that are checked at the same time: each keeps a processor busy for a third of a second
LOGINS_AT_ONCE = os.cpu_count() or 1

# For how many seconds after its last change an offered file is not given: a file manager may still
# be copying it
COPYING_SECONDS = 2
