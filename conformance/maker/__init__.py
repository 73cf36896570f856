"""Makes the objects and case files of the suite."""
from . import (colour_cases, grey_cases, layout_cases, mark_cases, shape_cases,
               table_cases)

AREAS = tuple(module.add_cases for module in (
    grey_cases, table_cases, shape_cases, layout_cases, colour_cases, mark_cases))
