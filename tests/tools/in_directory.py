"""A test case with a temporary directory of its own."""
import os
import tempfile
import unittest


class InDirectory(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.directory = holder.name

    def path(self, name):
        return os.path.join(self.directory, name)
