"""The settings that the library is measured with."""
import time

# The settings' reader trusts a file's time stamps only then: before, it reads the file again for each setting.
SETTLED_AFTER = 3.1  # seconds


def write(folder):
    """Writes ostra.ini into a folder. The time zone is fixed, so that local times cost the same everywhere."""
    temporary = folder.resolve() / "temporary"
    temporary.mkdir(exist_ok=True)
    settings = folder / "ostra.ini"
    settings.write_text(f"[Gateway]\nTimeZone = EST5EDT\nTemporaryDirectory = {temporary}\n")
    return settings


def wait_until_settled(settings):
    age = time.time() - settings.stat().st_ctime
    time.sleep(max(0, SETTLED_AFTER - age))
