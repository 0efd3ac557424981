"""Whether the board guide has every key that the schemas of the documents know.

    check_keys.py GUIDE SCHEMAS
"""

import json
import re
import sys
from pathlib import Path

guide, schemas = Path(sys.argv[1]), Path(sys.argv[2])


def keys(schema) -> set[str]:
    """The names of all properties, at whatever depth."""
    if isinstance(schema, list):
        return set().union(*map(keys, schema))
    if not isinstance(schema, dict):
        return set()
    own = schema.get("properties", {})
    return set(own).union(*map(keys, own.values()), *map(keys, (v for k, v in schema.items() if k != "properties")))


known = set().union(*(keys(json.loads(file.read_text())) for file in schemas.glob("*.schema.json")))
told = set(re.findall(r"`([^`\n]+)`", guide.read_text()))
missing = sorted(known - told)
print(*(f"{guide} lacks `{key}`" for key in missing), f"{len(known)} keys", sep="\n")
sys.exit(1 if missing or not known else 0)
