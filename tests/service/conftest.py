import pytest
from api import Api
from service import Service
from zookeeper import ZooKeeper


@pytest.fixture
def make_service(tmp_path):
    """Makes services that are ended with the test, whatever became of it; on an SQLite store of the
    sample cluster unless told otherwise."""
    made = []

    def make(store=None, filled=True, settings=(), limit=None):
        folder = tmp_path / f"service-{len(made)}"
        folder.mkdir()
        one = Service(folder, store, settings, limit)
        made.append(one)
        if filled:
            one.import_sample()
        return one

    yield make
    for one in made:
        one.end()


@pytest.fixture
def service(make_service):
    """A service that is ready."""
    return make_service().start()


@pytest.fixture
def api(service):
    return Api(service.url)


@pytest.fixture
def zookeeper(tmp_path):
    one = ZooKeeper(tmp_path / "zookeeper").start()
    yield one
    one.stop()


@pytest.fixture(params=["sqlite", "zookeeper"])
def store(request, tmp_path):
    """The name of an empty store, of each kind that outlives its program."""
    if request.param == "sqlite":
        yield f"sqlite:{tmp_path}/store.db"
        return
    one = ZooKeeper(tmp_path / "zookeeper").start()
    yield f"zookeeper:{one.address}"
    one.stop()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """A test that failed shows the log of its service."""
    outcome = yield
    report = outcome.get_result()
    service = item.funcargs.get("service")
    if report.failed and service is not None:
        report.sections.append(("log of the service", service.logged()[-8000:]))
