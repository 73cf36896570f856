"""Makes the objects and case files of the suite."""
from . import colour_cases, grey_cases, layout_cases, mark_cases, table_cases

AREAS = (grey_cases.add_cases, table_cases.add_cases, layout_cases.add_cases,
         colour_cases.add_cases, mark_cases.add_cases)
