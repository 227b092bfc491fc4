"""Prints the ten tests of a run that took longest.

usage: slowest.py OUTCOME

OUTCOME is what `ctest --output-junit` writes.
"""

import sys
import xml.etree.ElementTree as xml

tests = [(float(test.get("time")), test.get("name")) for test in xml.parse(sys.argv[1]).iter("testcase")]
print("\nThe slowest tests, in seconds:")
for seconds, name in sorted(tests, reverse=True)[:10]:
    print(f"{seconds:6.1f}  {name}")
