import Vesk

MainWindow {}
