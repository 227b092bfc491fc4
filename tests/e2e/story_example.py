"""The tour with the server of docs/examples/php instead of the demo service."""

from php_example import PhpExample
from service import demo_port
from stage import story
from tour import Tour


@story
def php_example(stage):
    pictures = stage.folder / "tour"
    pictures.mkdir()
    with PhpExample(demo_port(), stage.folder), Tour(pictures) as tour:
        tour.take(stage.release_app)
        assert tour.standard_error() == "", tour.standard_error()
