pragma ComponentBehavior: Bound

import Vesk

MainWindow {}
