"""pack.py FOLDER ARCHIVE: a zip of what is in FOLDER, the same bytes for the same files."""
import os
import sys
import zipfile
from pathlib import Path

folder, archive = Path(sys.argv[1]), Path(sys.argv[2])
aside = archive.with_suffix(".tmp")
with zipfile.ZipFile(aside, "w", zipfile.ZIP_DEFLATED) as out:
    for path in sorted(folder.rglob("*")):
        if path.is_file():
            # The earliest time that the format knows, as the files' own times differ by build.
            entry = zipfile.ZipInfo(str(path.relative_to(folder)), (1980, 1, 1, 0, 0, 0))
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            out.writestr(entry, path.read_bytes())
os.replace(aside, archive)
