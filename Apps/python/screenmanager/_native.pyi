# The native part is no interface of its own.
from typing import Any

def __getattr__(name: str) -> Any: ...
