"""First on PYTHONPATH, counts the lines that every Python process of the tests runs."""

import coverage

coverage.process_startup()
