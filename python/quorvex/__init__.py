"""DICOM images read, drawn and converted by QuorvexU, as NumPy arrays.

    import quorvex
    with quorvex.open("image.dcm") as image:
        frame = image.frame(0)                    # stored values, (rows, columns[, samples])
        values = image.values(0)                  # modality units
        picture = image.render(0, window=(40, 400), size=(1024, 1024))

Every call that decodes, draws or writes lets other threads run. An Image may be used by several threads at once.
Pictures and objects are what the DICOM standard defines for them.
"""
from ._converting import Conversion, ConversionFailure, can_write, convert
from ._errors import Cancelled, Error
from ._image import Image, Modality, open
from ._library import version
from ._png import write_png
from ._series import series
from ._view import View
from ._volume import Volume, VolumeError, volume

__all__ = ["Cancelled", "Conversion", "ConversionFailure", "Error", "Image", "Modality", "View", "Volume",
           "VolumeError", "can_write", "convert", "open", "series", "version", "volume", "write_png"]
__version__ = version()
