#pragma once

#include "Hid/BleTransport.h"
#include "Utils/Singleton.h"

#include <QList>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

class SleepNotification;

// The Bluetooth LE link: finds the mouse, attaches to its GATT service once the system holds
// a connection to it, moves 20-byte packets both ways and follows sleep and wake. "Connected"
// means notifications requested and the write characteristic known. Main thread; writes may
// come from any thread and are handed over, and isOpen() may be asked from any thread: it
// answers from a copy of the link state that this thread keeps current.
class BLEManager : public QObject, public Singleton<BLEManager> {
    Q_OBJECT

public:
    static constexpr char kService[] = "00001920-0000-1000-8000-00805f9b34fb";
    static constexpr char kReadCharacteristic[] = "00002b00-0000-1000-8000-00805f9b34fb";
    static constexpr char kWriteCharacteristic[] = "00002b01-0000-1000-8000-00805f9b34fb";
    static constexpr int kConnectTimeoutMs = 6000;
    enum Mode { ModeIdle = 0, ModeScanning = 1, ModeAttaching = 2 };

    // Tests hand in a transport and their own sleep watcher (either may be null); not owned.
    BLEManager(BleTransport* transport, SleepNotification* sleep, QObject* parent = nullptr);
    // The program's: the transport its configuration chose and the system's sleep notices, owned.
    BLEManager(std::unique_ptr<BleTransport> transport, std::unique_ptr<SleepNotification> sleep);
    ~BLEManager() override;

    bool isConnected();
    bool isOpen();
    bool isScan() const;
    int connectionMode() const { return mConnectionMode; }
    QTimer* connectTimer() { return &mConnectTimer; }
    // Whether an advertised name or a system address belongs to the mouse.
    static bool isAcceptedName(const QString& name);
    static bool isAcceptedAddress(const QString& address);
    // Tells the link which device type the application uses (1 Bluetooth); the owner of the
    // device type keeps it current. Reattachment acts only for type 1.
    void setDeviceTypeSource(std::function<int()> source);

signals:
    void signalScanFinished();
    void signalConnectState(bool connected, QString uuid);
    void signalReceiverMessage(QByteArray data);

public slots:
    void openDevice(QString uuid);
    void closeDevice();
    void scanDevice();
    void scanCancel();
    void serviceWriteMessage(QByteArray data);
    void onConnectTimeout();
    void onSystemDeviceConnected(QString address);
    void onWake();
    void onSleep();

private slots:
    void drainPendingWrites();

private:
    friend class Singleton<BLEManager>;
    BLEManager();  // never: the program makes it with its transport first

    void addDevice(const BleTransport::Device& device);
    void connectDevice();
    void deviceConnected();
    void addLowEnergyService(const QString& uuid);
    void serviceDetailsDiscovered(int state);
    void errorReceived(const QString& error);
    void deviceDisconnected();
    void writeOnThisThread(const QByteArray& data);
    void refreshLinkState();
    int deviceType() const;

    std::unique_ptr<BleTransport> mOwnedTransport;
    std::unique_ptr<SleepNotification> mOwnedSleep;
    BleTransport* mTransport;
    QString mDeviceUuid;
    QList<BleTransport::Device> mDevices;
    BleTransport::Device mCurrentDevice;
    int mConnectionMode = ModeIdle;
    bool mScanning = false;
    QTimer mConnectTimer;
    std::function<int()> mDeviceType;
    std::atomic<bool> mLinkOpen{false};
    std::mutex mPendingMutex;
    QList<QByteArray> mPendingWrites;  // from other threads, waiting for this one
};
