"""Which shared libraries the program is linked with: each one more is time at every start.

    libraries_test.py TAVLIN-KEYWORDS
"""
import re
import subprocess
import sys

listed = subprocess.run(['readelf', '--dynamic', '--wide', sys.argv[1]], check=True,
                        capture_output=True, text=True).stdout
needed = re.findall(r'\(NEEDED\).*\[(.*)\]', listed)
others = [name for name in needed if not re.match(r'libc\.so|ld-?(linux|64)', name)]
if 'libc.so.6' not in needed or others:
    sys.exit(f'linked with {needed}')
