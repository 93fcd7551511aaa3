"""Tests of the store. They reach its own modules, and the tools that start and ask it."""
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools" / "support"), str(ROOT / "tools" / "store_trials"),
                str(ROOT / "service")]
