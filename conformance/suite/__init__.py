"""What the suite's commands share: PNG files, cases, tools, comparison and the page."""
