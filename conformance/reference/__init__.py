"""Pictures computed straight from the text of the standard: plain and slow, on purpose."""
