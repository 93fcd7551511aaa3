"""What the resources and the code have to say alike."""
from __future__ import annotations

import re
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2] / "src"


class Identifiers(unittest.TestCase):
    def test_type_library_and_code_agree(self) -> None:
        library = {}
        for number, kind, name in re.findall(
                r"uuid\(([0-9A-F-]+)\)\]\s*(interface|coclass) (\w+)",
                (SOURCE / "resources" / "quilldeck.idl").read_text(encoding="utf-8")):
            if name not in ("IUnknown", "IDispatch"):
                prefix = "IID_" if kind == "interface" else "CLSID_"
                library[prefix + name] = number.replace("-", "").lower()
        code = {name: "".join(re.findall(r"0x([0-9a-f]+)", number)) for name, number in re.findall(
            r"((?:CLSID|IID)_\w+) = \{([^;]+)\};",
            (SOURCE / "com" / "class_ids.h").read_text(encoding="utf-8"))}
        self.assertEqual(48, len(library))
        self.assertEqual(library, code)


if __name__ == "__main__":
    unittest.main()
